#!/bin/sh
# Runs each fuzz target for a while, from the corpus in the tree. A run that is long enough to mean
# something writes docs/fuzzing.md. Usage: fuzz.sh SECONDS
set -e
seconds=$1
enough=180
build=$(sh scripts/sanitized_build.sh address fuzzers)
targets=$(ls fuzz/*_fuzz.cpp | sed 's|fuzz/\(.*\)_fuzz.cpp|\1|')
echo "$targets" | xargs -P "$(nproc)" -I TARGET sh scripts/fuzz_target.sh "$build" TARGET "$seconds"
[ "$seconds" -lt "$enough" ] || sh scripts/fuzz_table.sh "$build" $targets > docs/fuzzing.md
