#!/bin/sh
# Builds everything with sanitizers and runs the tests. Usage: sanitized_tests.sh address|thread
set -e
build=$(sh scripts/sanitized_build.sh "$1")
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
export TSAN_OPTIONS=halt_on_error=1:suppressions=$PWD/tests/tsan.supp
# The thread sanitizer finds nothing where the programs only wait for the modem.
waiting='zopctl_(bad_usage|doctor|dump_breaks|firmware.*|hostile.*|html|simulator|support|update_(begins|writes))'
[ "$1" = thread ] && set -- -E "$waiting" || set --
sh scripts/run_tests.sh "$build" 1 "$@"
