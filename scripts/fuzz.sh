#!/bin/sh
# Builds the fuzz targets with clang and runs each for a while, from the corpus in the tree.
# Usage: fuzz.sh SECONDS
set -e
seconds=$1
build=build/fuzz
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DZOP_SANITIZE="fuzzer-no-link,address,undefined" -DZOP_FUZZ=ON \
  -DCMAKE_CXX_FLAGS_DEBUG=-g1 -DZOP_TESTS=OFF --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)" --target fuzzers
for program in "$build"/fuzz_*; do
  target=$(basename "$program")
  corpus=fuzz/corpus/${target#fuzz_}
  found=$build/corpus/${target#fuzz_}
  mkdir -p "$corpus" "$found"
  "$program" "$found" "$corpus" -max_total_time="$seconds" -max_len=5100 \
    -artifact_prefix="$build/" > "$build/log_$target" 2>&1 || {
    tail -40 "$build/log_$target"
    echo "fuzz: $target found a fault; its input is in $build/" >&2
    exit 1
  }
  echo "fuzz: $target: $(grep -E '^Done' "$build/log_$target")"
done
