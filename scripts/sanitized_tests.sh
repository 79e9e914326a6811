#!/bin/sh
# Builds everything with sanitizers and runs the tests. Usage: sanitized_tests.sh SANITIZERS
set -e
sanitizers=$1
build=build/$(echo "$sanitizers" | tr ',' '-')
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-g1 \
  -DZOP_SANITIZE="$sanitizers" --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)"
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
export TSAN_OPTIONS=halt_on_error=1:suppressions=$PWD/tests/tsan.supp
ctest --test-dir "$build" -j "$(nproc)" --output-on-failure
