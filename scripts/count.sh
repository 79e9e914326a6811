#!/bin/sh
# Counts the instructions and memory accesses of the module's hot roads on 32-bit ARM, and compares
# them with bench/counts.txt. With REASON set, records them there instead.
set -e
build=build/arm
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabi.cmake --no-warn-unused-cli --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)" --target hot_roads > "$build/hot_roads.log" ||
  { cat "$build/hot_roads.log"; exit 1; }
cc -shared -fPIC -O2 -Wall -Wextra -Werror -o "$build/instruction_counter.so" bench/instruction_counter.c
python3 scripts/count.py "$build" bench/counts.txt "$REASON"
