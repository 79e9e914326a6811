#!/bin/sh
# Builds and runs the benchmarks, then shows each figure as a ratio to its floor of the same run.
# BENCH_SMOKE=1 runs each for a moment, to see that it works; its ratios mean little.
set -e
build=build/bench
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZOP_BENCHMARKS=ON -DZOP_TESTS=OFF \
  --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)" --target zop_bench
options="--benchmark_repetitions=5 --benchmark_enable_random_interleaving=true"
[ -n "$BENCH_SMOKE" ] && options="--benchmark_min_time=0.01"
"$build/zop_bench" $options --benchmark_out="$build/results.json" --benchmark_out_format=json \
  > "$build/results.txt" 2>&1 || { cat "$build/results.txt"; exit 1; }
grep -q ERROR "$build/results.txt" && { grep ERROR "$build/results.txt"; exit 1; }
python3 scripts/bench_ratios.py "$build/results.json"
