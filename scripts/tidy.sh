#!/bin/sh
# Runs clang-tidy over the module's rooms and the tools. A room of the tools is one source here: so
# headers are read once. It is joined by text, because the analyzer enters only functions of the file
# itself.
set -e
build=build/tidy
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DCMAKE_UNITY_BUILD=ON \
  -DZOP_TESTS=OFF --log-level=WARNING > /dev/null
find "$build" -name 'unity_*.cxx' | while read -r room; do
  awk '/^#include ".*\.cpp"/ {
    source = substr($2, 2, length($2) - 2)
    print "#line 1 " $2
    while ((getline line < source) > 0) print line
    next
  } { print }' "$room" > "$room.joined"
  mv "$room.joined" "$room"
done

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
# For the tools a ninth of the default paths, which takes two thirds of the time.
to_analyzer=--extra-arg=-Xclang
sources -v "$module|/bench/" |
  check 1 $to_analyzer --extra-arg=-analyzer-config $to_analyzer --extra-arg=max-nodes=25000
if [ -s "$build/tidy.log" ]; then
  # Lines of a joined room are shown as lines of its sources.
  awk -F: '/^[^:]*unity_[^:]*:[0-9]+:/ {
    for (i = 1; i <= $2 && (getline line < $1) > 0; ++i)
      if (line ~ /^#line 1 /) { start = i; split(line, word, "\"") }
    close($1)
    sub(/^[^:]*:[0-9]+/, word[2] ":" $2 - start)
  } { print }' "$build/tidy.log"
  exit 1
fi
echo "tidy: clean"
