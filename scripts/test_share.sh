#!/bin/sh
# How many lines the tests and fuzz targets have for each hundred of the code: lines of sources that
# are neither blank nor only a comment. Benchmarks are not counted. Fails above LIMIT.
LIMIT=34
git rev-parse HEAD > /dev/null 2>&1 || exit 0  # sources without their history
lines() {
  git ls-files -- "$@" | grep -E '\.(c|cpp|h|py|sh|lua)$' | xargs cat |
    grep -cvE '^[[:space:]]*(//.*|/?\*.*|# .*|#!.*|#|--.*)?$'
}
code=$(lines . ':!tests' ':!fuzz' ':!bench' ':!docs')
tests=$(lines tests fuzz)
awk -v code="$code" -v tests="$tests" -v limit="$LIMIT" 'BEGIN {
  share = 100 * tests / code
  printf "%d lines of tests for %d of code: %.1f %%\n", tests, code, share
  if (share > limit) {
    print "tests: more than " limit " %; see CONTRIBUTING.md"
    exit 1
  }
}'
