#!/bin/sh
# Runs the tests of a build folder, several at once: most of them wait most of the time. Usage:
# run_tests.sh BUILD [JOBS FOR EACH PROCESSOR [OPTION OF CTEST...]]
# Their files are made in memory where it has room and may hold programs: they make and sync thousands.
memory=/dev/shm
room=$(df -k --output=avail $memory 2> /dev/null | tail -1)
if [ -z "$TMPDIR" ] && [ -w $memory ] && [ "${room:-0}" -gt 1000000 ] &&
  ! grep -q " $memory .*noexec" /proc/mounts; then
  export TMPDIR=$memory
fi
build=$1
jobs=$(($(nproc) * ${2:-5}))
shift $(($# > 2 ? 2 : $#))
exec ctest --test-dir "$build" -j $jobs --output-on-failure "$@"
