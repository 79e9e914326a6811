#!/bin/sh
# Prints the size of the stripped module for each target, and fails above a limit.
set -e
here=$(dirname "$0")
copy=$(mktemp)
trap 'rm -f "$copy"' EXIT
printf '%-8s %9s %9s %9s   %s\n' target text data bss 'of text+data, bss'
result=0
while read -r target most most_bss; do
  module=build/$target/libzop_module.so.0
  strip=strip
  [ "$target" = arm ] && strip=arm-linux-gnueabi-strip
  [ -e "$module" ] || { echo "size: no $module; run make build and make arm" >&2; exit 1; }
  $strip -o "$copy" "$module"
  set -- $(size "$copy" | tail -1)
  printf '%-8s %9d %9d %9d   %d %%, %d %%\n' "$target" "$1" "$2" "$3" \
    $((($1 + $2) * 100 / most)) $(($3 * 100 / most_bss))
  [ $(($1 + $2)) -le "$most" ] && [ "$3" -le "$most_bss" ] || {
    echo "size: $target is larger than scripts/size_limits.txt allows" >&2
    result=1
  }
done <<LIMITS
$(grep -v '^#' "$here/size_limits.txt")
LIMITS
exit $result
