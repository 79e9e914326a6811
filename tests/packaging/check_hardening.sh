#!/bin/sh
# Checks that built files are hardened: relocations are read-only and bound at the start, stacks are
# guarded and hold no code, calls that fill buffers are checked, programs load anywhere.
# Usage: check_hardening.sh FILE...
failures=0
for file; do
  fail() { echo "check_hardening: $file: $*" >&2; failures=$((failures + 1)); }
  dynamic=$(readelf -dW "$file")
  segments=$(readelf -lW "$file")
  imports=$(nm -D --undefined-only "$file")
  has() { echo "$1" | grep -qE "$2"; }
  has "$dynamic" 'FLAGS.* (BIND_NOW|NOW)' || fail "binds lazily"
  has "$segments" GNU_RELRO || fail "its relocations stay writable"
  has "$segments" 'GNU_STACK.* RW ' || fail "its stack is executable"
  has "$dynamic" TEXTREL && fail "relocates its code"
  has "$imports" '__stack_chk_fail' || fail "has no stack protector"
  has "$imports" '__v?snprintf_chk' || fail "is built without checked calls"
  has "$(readelf -hW "$file")" 'Type: +DYN' || fail "loads at a fixed address"
done
[ "$failures" -eq 0 ] && echo "check_hardening: $# files"
exit "$failures"
