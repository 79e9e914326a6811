#!/bin/sh
# Tries every function with every fault of the line, under sanitizers. Rewrites the rows of
# docs/faults.md and fails when they change.
set -e
build=$(sh scripts/sanitized_build.sh address zop_faults)
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:abort_on_error=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
"$build/zop_faults" --rewrite
