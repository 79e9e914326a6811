#!/bin/sh
# Results of the last run of each fuzz target, from its log. Usage: fuzz_table.sh BUILD TARGET...
build=$1
shift
cat <<HEAD
# Fuzzing

\`make fuzz\` runs every target of \`fuzz/\` under the address and undefined-behaviour sanitizers and
writes this page. An input that found a fault stays in the corpus as \`fault-*\`; the tests replay
every corpus. Edges are those of the code under test that were covered when the run ended.

| target | what it does | seconds | executions | each second | edges | corpus files | faults found so far |
|---|---|---:|---:|---:|---:|---:|---:|
HEAD
all=0
for target; do
  log=$build/log_fuzz_$target
  corpus=fuzz/corpus/$target
  does=$(sed -n '/^\/\/ /!q; s|^// ||p' "fuzz/${target}_fuzz.cpp" | tr '\n' ' ' | sed 's/[.:;] .*//')
  set -- $(LC_ALL=C sed -n 's/^Done \([0-9]*\) runs in \([0-9]*\) second.*/\2 \1/p' "$log")
  edges=$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -1)
  echo "| $target | $does | $1 | $2 | $(($2 / $1)) | $edges | $(ls "$corpus" | wc -l) |" \
    "$(ls "$corpus" | grep -c '^fault-') |"
  all=$((all + $2))
done
echo
echo "Executions in all: $all."
