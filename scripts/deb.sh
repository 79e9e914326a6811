#!/bin/sh
# Builds the Debian packages from the committed sources into build/deb, checks them with lintian,
# and tries them in a scratch root.
set -e
version=$(sed -n '1s/.*(\(.*\)).*/\1/p' packaging/debian/changelog)
build=build/deb
rm -rf "$build"
tree=$build/zop-module-$version
mkdir -p "$tree"
git archive HEAD | tar -x -C "$tree"
mv "$tree/packaging/debian" "$tree/debian"
(cd "$tree" && DEB_BUILD_OPTIONS="parallel=$(nproc) nocheck" dpkg-buildpackage -b -us -uc) \
  > "$build/log" 2>&1 || { tail -40 "$build/log"; exit 1; }
lintian --allow-root --fail-on error --suppress-tags initial-upload-closes-no-bugs "$build"/*.changes
sh tests/packaging/packages.sh "$build"
ls "$build"/*.deb
