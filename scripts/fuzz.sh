#!/bin/sh
# Runs each fuzz target for SECONDS, starting from the corpus in the tree. A long run also writes
# docs/fuzzing.md. Usage: fuzz.sh SECONDS
set -e
seconds=$1
enough=180
build=$(sh scripts/sanitized_build.sh address fuzzers)
targets=$(ls fuzz/*_fuzz.cpp | sed 's|fuzz/\(.*\)_fuzz.cpp|\1|')
echo "$targets" | xargs -P "$(nproc)" -I TARGET sh scripts/fuzz_target.sh "$build" TARGET "$seconds"
[ "$seconds" -lt "$enough" ] || sh scripts/fuzz_table.sh "$build" $targets > docs/fuzzing.md
