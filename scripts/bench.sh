#!/bin/sh
# Builds and runs the benchmarks, then shows each figure as a ratio to its floor of the same run.
# BENCH_SMOKE=1 only checks that each one works: its ratios mean little.
# Usage: bench.sh BUILD
set -e
build=$1
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZOP_BENCHMARKS=ON \
  --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)" --target zop_bench
options="--benchmark_repetitions=5 --benchmark_enable_random_interleaving=true"
[ -n "$BENCH_SMOKE" ] && options="--benchmark_min_time=0.01"
run() {
  log=$build/$1.txt
  "$build/zop_bench" $options --benchmark_filter="$2" --benchmark_out="$build/$1.json" \
    --benchmark_out_format=json > "$log" 2>&1 || { cat "$log"; exit 1; }
  grep ERROR "$log" && exit 1
  return 0
}
# Programs run separately: their peak memory includes that of the process that starts them.
programs='parse_log|count_lines|grep|zopctl_|empty_program'
run bench_programs "$programs"
run bench_module "-$programs"
python3 scripts/bench_ratios.py "$build/bench_programs.json" "$build/bench_module.json"
