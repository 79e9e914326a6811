#!/bin/sh
# Checks the built library: it exports what the public headers declare and nothing else, and needs
# libc alone. Usage: check_library.sh LIBRARY SOURCE_DIR
library=$1
source=$2
failures=0
fail() { echo "check_library: $*" >&2; failures=$((failures + 1)); }
dynamic() { readelf -dW "$library"; }

work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT

# Functions and data that the headers of the module declare (nubi.h declares the platform's).
sed -e 's|/\*.*\*/||' "$source"/include/vurn.h "$source"/include/zop.h \
    "$source"/include/zop_diag_info.h $(ls "$source"/include/modem_download.h 2>/dev/null) |
  grep -vE '^typedef' |
  grep -oE '\b(vurn|zop|modem|mem_dump)_[a-z0-9_]+\(|^extern .*\b[A-Za-z]+(\[\])?;' |
  sed -E 's/\($//; s/^extern .* ([A-Za-z]+)(\[\])?;/\1/' | sort -u > "$work/declared"
nm -D --defined-only "$library" | awk '{print $3}' | sort -u > "$work/exported"
[ "$(wc -l < "$work/declared")" -gt 50 ] || fail "found only few declarations: is the pattern right?"
diff "$work/declared" "$work/exported" > "$work/diff" ||
  fail "declared (<) and exported (>) names differ:
$(grep '^[<>]' "$work/diff")"

case " ${SANITIZED:-} " in
  *" 1 "*) ;;  # a sanitizer brings its own runtime
  *)
    needed=$(dynamic | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | tr '\n' ' ')
    case $needed in
      "libc.so.6 "|"libc.so.6 ld-linux-armhf.so.3 "|"libc.so.6 ld-linux.so.3 ") ;;
      *) fail "needs more than libc: $needed" ;;
    esac
    ;;
esac
[ "$(dynamic | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')" = libzop_module.so.0 ] || fail "wrong SONAME"

[ "$failures" -eq 0 ] && echo "check_library: $(wc -l < "$work/exported") exported names, all as declared"
exit "$failures"
