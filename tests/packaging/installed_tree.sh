#!/bin/sh
# Installs into a scratch prefix, builds the example host against it with find_package alone and with
# pkg-config alone, and runs it. Usage: installed_tree.sh BUILD_DIR SOURCE_DIR
build=$1
source=$2
fail() { echo "installed_tree: $*" >&2; exit 1; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
prefix=$work/usr
cmake --install "$build" --prefix "$prefix" > /dev/null || fail "no installation"
libraries=$(dirname "$(find "$prefix" -name libzop_module.so)")

mkdir "$work/project"
cp "$source/examples/host.c" "$work/project"
cat > "$work/project/CMakeLists.txt" <<'PROJECT'
cmake_minimum_required(VERSION 3.25)
project(host C)
find_package(zop_module 0.1 REQUIRED)
add_executable(host host.c)
target_link_libraries(host PRIVATE zop_module::zop_module)
PROJECT
{ cmake -S "$work/project" -B "$work/project/build" -DCMAKE_PREFIX_PATH="$prefix" &&
  cmake --build "$work/project/build"; } > "$work/log" 2>&1 || { cat "$work/log"; fail find_package; }

for file in bin/zopctl bin/zop-modem-sim share/man/man1/zopctl.1 share/man/man1/zop-modem-sim.1 \
    share/bash-completion/completions/zopctl share/zsh/vendor-completions/_zopctl \
    share/fish/vendor_completions.d/zopctl.fish \
    share/zop-module/scenarios/roaming.toml share/zop-module/schema/status.json include/zop_module/zop.h; do
  [ -s "$prefix/$file" ] || fail "no $file"
done
"$prefix/bin/zopctl" --sim=roaming status | grep -q Elsewhere ||
  fail "the installed zopctl does not find its module, simulator or scenarios"

sh "$source/tests/packaging/example_host.sh" "$source/examples/host.c" "$libraries" \
  "$prefix/bin/zop-modem-sim"
