#!/bin/sh
# Builds the example host by pkg-config alone and lets it read a simulated modem. Ends with 77 where
# the kernel grants no namespaces. Usage: example_host.sh HOST_C LIBRARY_FOLDER SIMULATOR
fail() { echo "example_host: $*" >&2; exit 1; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cc -std=c99 -Wall -Wextra -Wpedantic -Werror "$1" \
  $(PKG_CONFIG_LIBDIR="$2/pkgconfig" pkg-config --cflags --libs zop_module) -o "$work/host" ||
  fail "does not build"
LD_LIBRARY_PATH=$2 sh "$(dirname "$0")/with_modem.sh" "$3" "$work/host" > "$work/output"
result=$?
[ "$result" -eq 77 ] && cat "$work/output" && exit 77
[ "$result" -eq 0 ] && grep -qx 'IMEI       004999010640000' "$work/output" ||
  fail "ends with $result and says: $(cat "$work/output")"
