#!/bin/sh
# Builds and runs the benchmarks, then shows each figure as a ratio to its floor of the same run.
# BENCH_SMOKE=1 runs each for a moment, to see that it works; its ratios mean little.
# Usage: bench.sh BUILD
set -e
build=$1
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZOP_BENCHMARKS=ON \
  --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)" --target zop_bench
options="--benchmark_repetitions=5 --benchmark_enable_random_interleaving=true"
[ -n "$BENCH_SMOKE" ] && options="--benchmark_min_time=0.01"
"$build/zop_bench" $options --benchmark_out="$build/benchmarks.json" --benchmark_out_format=json \
  > "$build/benchmarks.txt" 2>&1 || { cat "$build/benchmarks.txt"; exit 1; }
grep -q ERROR "$build/benchmarks.txt" && { grep ERROR "$build/benchmarks.txt"; exit 1; }
python3 scripts/bench_ratios.py "$build/benchmarks.json"
