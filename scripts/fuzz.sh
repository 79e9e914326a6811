#!/bin/sh
# Builds the fuzz targets with clang and runs each for a while, from the corpus in the tree. A run
# that is long enough to mean something writes docs/fuzzing.md. Usage: fuzz.sh SECONDS
set -e
seconds=$1
enough=180
build=build/fuzz
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DZOP_SANITIZE="fuzzer-no-link,address,undefined" -DZOP_FUZZ=ON \
  -DCMAKE_CXX_FLAGS=-O1 -DCMAKE_CXX_FLAGS_DEBUG=-g1 -DZOP_TESTS=OFF --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)" --target fuzzers
targets=$(ls fuzz/*_fuzz.cpp | sed 's|fuzz/\(.*\)_fuzz.cpp|\1|')
echo "$targets" | xargs -P "$(nproc)" -I TARGET sh scripts/fuzz_target.sh "$build" TARGET "$seconds"
[ "$seconds" -lt "$enough" ] || sh scripts/fuzz_table.sh "$build" $targets > docs/fuzzing.md
