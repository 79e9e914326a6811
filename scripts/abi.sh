#!/bin/sh
# Compares the exported names and types of the built library with the baseline in the tree, and
# checks that CHANGELOG.md names the baseline. Usage: abi.sh check|record LIBRARY
set -e
here=$(dirname "$0")/..
baseline=$here/packaging/libzop_module.abi
library=$2
name_of_baseline() { sha256sum "$baseline" | cut -c1-12; }

case $1 in
  record)
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only \
      --headers-dir "$here/include" "$library" | sed "s|path='$(cd "$here" && pwd)/|path='|" > "$baseline"
    echo "abi: recorded in $baseline. Say in CHANGELOG.md what changes for hosts, with these words:"
    echo "  interface $(name_of_baseline)"
    ;;
  check)
    if [ "$(uname -m)" != x86_64 ]; then
      echo "skipped: the baseline is for x86_64"
      exit 77
    fi
    abidiff --headers-dir2 "$here/include" "$baseline" "$library" || {
      echo "abi: the interface differs from its record. If that is intended: make abi-baseline" >&2
      exit 1
    }
    grep -q "interface $(name_of_baseline)" "$here/CHANGELOG.md" || {
      echo "abi: CHANGELOG.md has no line with \"interface $(name_of_baseline)\"" >&2
      exit 1
    }
    ;;
  *)
    echo "usage: abi.sh check|record LIBRARY" >&2
    exit 2
    ;;
esac
