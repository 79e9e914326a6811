#!/bin/sh
# Builds with clang, warnings as errors, and runs clang-tidy over the module's rooms and the tools.
set -e
build=build/clang
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)"
git ls-files 'core/*.cpp' 'link/*.cpp' 'commands/*.cpp' 'report/*.cpp' 'module/*.cpp' \
  'download/*.cpp' 'simulator/*.cpp' 'zopctl/*.cpp' |
  xargs -n 4 -P "$(nproc)" clang-tidy -p "$build" --quiet --warnings-as-errors='*' 2>&1 |
  { grep -vE '^[0-9]+ warnings? generated|^$' || true; } > "$build/tidy.log"
if [ -s "$build/tidy.log" ]; then
  cat "$build/tidy.log"
  exit 1
fi
echo "tidy: clean"
