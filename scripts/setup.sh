#!/bin/sh
# Installs the missing packages of packages.txt: the common ones, and those of the given sections.
# Needs no network when none is missing. Prints one line when it fails.
# Usage: setup.sh [SECTION...]
here=$(dirname "$0")
packages=$(awk -v wanted=" $* " '
  /^#/ { next }
  /^\[/ { gsub(/[][]/, ""); skipped = !index(wanted, " " $0 " "); next }
  !skipped' "$here/packages.txt")
missing=
for package in $packages; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
    missing="$missing $package"
done
[ -z "$missing" ] && exit 0

fail() { echo "setup: $*" >&2; exit 1; }
as_root=
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || fail "root or sudo is needed to install:$missing"
  as_root=sudo
fi
command -v apt-get >/dev/null || fail "no apt-get here; install by hand:$missing"

echo "setup: installing$missing"
log=$(mktemp) || exit 1
trap 'rm -f "$log"' EXIT
install() {
  $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing \
    > "$log" 2>&1
}
refresh() { $as_root apt-get update > "$log" 2>&1; }
# Libraries for a cross build: their architecture must be known to dpkg first.
for architecture in $(echo "$missing" | tr ' ' '\n' | sed -n 's/.*://p' | sort -u); do
  dpkg --print-foreign-architectures | grep -qx "$architecture" && continue
  { $as_root dpkg --add-architecture "$architecture" && refresh; } ||
    fail "could not get the packages of $architecture"
done
# The package lists may be missing or old: update them and try once more.
install || { refresh && install; } ||
  fail "could not install$missing: $(grep -E '^(E|Err)' "$log" | head -1)"
