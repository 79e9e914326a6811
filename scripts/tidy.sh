#!/bin/sh
# Runs clang-tidy over the module's rooms and the tools. A room of the tools is one source here: so
# headers are read once. The analyzer, which takes most of the time, follows the module alone: the tools
# free nothing by hand, and run under the sanitizers.
set -e
build=build/tidy
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DCMAKE_UNITY_BUILD=ON \
  -DZOP_TESTS=OFF --log-level=WARNING > /dev/null

sources() { sed -n 's/.*"file": "\(.*\)",*/\1/p' "$build/compile_commands.json" | grep -E "$@"; }
check() {
  each=$1
  shift
  xargs -n "$each" -P "$(nproc)" clang-tidy -p "$build" --quiet "$@" --warnings-as-errors='*' 2>&1 |
    { grep -vE '^[0-9]+ warnings? generated|^$' || true; } >> "$build/tidy.log"
}
: > "$build/tidy.log"
module="^$PWD/(core|link|commands|report|module|download)/"
sources "$module" | check 4
sources -v "$module|/bench/" | check 1 --checks='-clang-analyzer-*,-bugprone-suspicious-include'
if [ -s "$build/tidy.log" ]; then
  cat "$build/tidy.log"
  exit 1
fi
echo "tidy: clean"
