#!/bin/sh
# Runs all tests, including the fuzz corpora, in a build that counts executed lines and branches.
# Prints the share of each room; build/coverage/report.html shows it line by line. Fails when a room
# is below the limits.
set -e
least_lines=95
least_branches=85
build=build/coverage
trace=$build/trace.json
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZOP_COVERAGE=ON --log-level=WARNING \
  > /dev/null
find "$build" -name '*.gcda' -delete
cmake --build "$build" -j "$(nproc)"
# A program whose files may not grow can't write its counts.
export GCOV_ERROR_FILE=/dev/null
# Checks of the built files do not apply to this build.
ctest --test-dir "$build" -j "$(nproc)" --output-on-failure -E '^(library|install|packaging)\.'

rooms='link commands report download'
filters=$(printf -- '--filter %s/ ' $rooms)
gcovr $filters --exclude-throw-branches --exclude-unreachable-branches --json "$trace" "$build"
gcovr -a "$trace" --txt "$build/lines.txt" --html-details "$build/report.html"
gcovr -a "$trace" --branches --txt "$build/branches.txt"
result=0
for room in $rooms; do
  summary=$(gcovr -a "$trace" --filter "$room/" --print-summary --output "$build/summary.txt" \
    --fail-under-line "$least_lines" --fail-under-branch "$least_branches") || result=1
  echo "coverage: $room: $(echo "$summary" | grep -E '^(lines|branches)' | paste -sd ' ')"
done
[ "$result" -eq 0 ] || echo "coverage: $least_lines % of lines and $least_branches % of branches" \
  "are required of each room; see $build/report.html" >&2
exit "$result"
