#!/bin/sh
# Builds everything with sanitizers and runs the tests. Usage: sanitized_tests.sh address|thread
set -e
build=$(sh scripts/sanitized_build.sh "$1")
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
export TSAN_OPTIONS=halt_on_error=1:suppressions=$PWD/tests/tsan.supp
sh scripts/run_tests.sh "$build" 1
