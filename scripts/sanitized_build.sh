#!/bin/sh
# Builds with clang and sanitizers: "address" (with undefined behaviour and the fuzz targets) or
# "thread". Prints the build folder. Usage: sanitized_build.sh KIND [TARGET...]
set -e
kind=$1
shift
case $kind in
  address) sanitizers=address,undefined,fuzzer-no-link ;;
  *) sanitizers=$kind ;;
esac
build=build/$kind
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS_DEBUG=-g1 -DZOP_SANITIZE="$sanitizers" \
  -DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld -DCMAKE_UNITY_BUILD=ON --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)" ${*:+--target "$@"} >&2
echo "$build"
