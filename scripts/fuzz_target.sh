#!/bin/sh
# Runs one fuzz target. New inputs go to BUILD/corpus, from which the next run continues.
# Usage: fuzz_target.sh BUILD TARGET SECONDS
build=$1
target=$2
corpus=fuzz/corpus/$target
found=$build/corpus/$target
log=$build/log_fuzz_$target
# Bytes of an input: what the format needs, since long inputs cost time. With fewer the corpus in the
# tree no longer reaches all that it can.
case $target in
  download | report) longest=2400 ;;        # the longest reply, a record
  capture | log | scenario) longest=1400 ;; # a file, the longest line of a log
  fleet | modem) longest=400 ;;             # two reports, eight requests
  page | recording) longest=300 ;;          # five moments; long recordings are in the corpus alone
  *) longest=800 ;; # an answer of which every byte is stuffed
esac
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
# For speed: little memory waits to be used again, and no block knows where it was allocated. A
# saved input shows that when it is run without these options.
export ASAN_OPTIONS=quarantine_size_mb=1:thread_local_quarantine_size_kb=64:malloc_context_size=0:max_malloc_fill_size=0
mkdir -p "$found"
# Endless runs are detected from outside, because the clock of a World jumps. An aborted target
# saves its input.
timeout -s ABRT $(($3 + 120)) "$build/fuzz_$target" "$found" "$corpus" -max_total_time="$3" \
  -timeout=0 -max_len=$longest -entropic=0 -reduce_inputs=0 -print_final_stats=1 \
  -artifact_prefix="$build/$target-" > "$log" 2>&1 || {
  tail -40 "$log"
  echo "fuzz: $target found a fault; its input is $build/$target-*" >&2
  exit 255  # stops xargs
}
echo "fuzz: $target: $(grep -aE '^Done' "$log")"
