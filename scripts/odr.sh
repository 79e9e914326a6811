#!/bin/sh
# Fails when two sources of a program define the same name differently: the linker takes one of them
# silently, but with link-time optimization the compiler sees both. With UNITY=OFF each source is compiled
# by itself, without precompiled headers: so each must include what it uses.
# Usage: odr.sh [TARGET...], by default the library and the two programs; "all" adds the tests and the
# fuzz targets.
set -e
[ $# -eq 0 ] && set -- zop_module zopctl zop-modem-sim
build=build/odr
odr='-flto=auto -O0 -Werror=odr -Werror=lto-type-mismatch'
[ "${UNITY:-ON}" = ON ] && alone=OFF || alone=ON
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_UNITY_BUILD="${UNITY:-ON}" \
  -DCMAKE_DISABLE_PRECOMPILE_HEADERS="$alone" -DCMAKE_AR="$(command -v gcc-ar)" \
  -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ -DCMAKE_RANLIB="$(command -v gcc-ranlib)" \
  -DCMAKE_C_FLAGS="$odr" -DCMAKE_CXX_FLAGS="$odr" --log-level=WARNING > /dev/null
if ! cmake --build "$build" -j "$(nproc)" --target "$@" > "$build/odr.log" 2>&1; then
  cat "$build/odr.log"
  exit 1
fi
echo "one definition rule: clean"
