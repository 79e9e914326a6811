#!/bin/sh
# Holds the include lines of every room against the table of who may call whom (ARCHITECTURE.md).
# Usage: check_includes.sh [SOURCE_DIR]
cd "${1:-.}" || exit 1
failures=0

# check ROOM ALLOWED...: a room may always include itself.
check() {
  room=$1
  shift
  allowed=$(echo "$room" "$@" | tr ' ' '|')
  bad=$(grep -rnE '^#include "' "$room" --include='*.h' --include='*.cpp' 2>/dev/null |
        grep -vE "#include \"($allowed)/")
  [ -z "$bad" ] && return
  echo "check_includes: $room may include only: $room $*"
  echo "$bad"
  failures=$((failures + 1))
}

check include
check core include
check link include core
check commands include core link
check report include core commands link
check module include core commands link report
check download include core link commands
check simulator include
check records include
check page records
check zopctl include simulator records page
exit "$failures"
