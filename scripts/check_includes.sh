#!/bin/sh
# Checks the include lines of every room against the table of rooms in ARCHITECTURE.md.
# Usage: check_includes.sh [SOURCE_DIR]
cd "${1:-.}" || exit 1
failures=0

# check ROOM ALLOWED...: the sources of one folder. A room may include itself and the rooms in it.
check() {
  room=$1
  shift
  allowed=$(echo "$room" "$@" | tr ' ' '|')
  bad=$(grep -nE '^#include "' "$room"/*.h "$room"/*.cpp 2>/dev/null |
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
check simulator/line
check simulator/download simulator/line
check simulator/model include simulator/line simulator/download
check simulator/requests include simulator/line simulator/model
check simulator/scenario include simulator/line simulator/download simulator/model simulator/requests
check simulator include
check records include
check page records
check fleet include records page
check zopctl/text include records
check zopctl/host include simulator records zopctl/text
check zopctl/live records zopctl/text zopctl/host
check zopctl/firmware simulator zopctl/text zopctl/host
check zopctl/verbs include records page fleet zopctl/text zopctl/host
check zopctl include simulator
exit "$failures"
