#!/bin/sh
# Builds everything for 32-bit ARM, runs the tests of the module and of the simulated modem
# under qemu-user, then lets the ARM zopctl read the ARM simulated modem.
set -e
build=build/arm
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZOP_FLEET=OFF -DCMAKE_UNITY_BUILD=ON \
  -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabi.cmake --no-warn-unused-cli --log-level=WARNING > /dev/null
cmake --build "$build" -j "$(nproc)"
ctest --test-dir "$build" -j "$(nproc)" --output-on-failure

folder=$(mktemp -d)
qemu-arm "$build/zop-modem-sim" --link "$folder/modem" > "$folder/path" &
simulator=$!
trap 'kill $simulator; rm -rf "$folder"' EXIT
until [ -s "$folder/path" ]; do sleep 0.1; done
imei=$(qemu-arm "$build/zopctl" --device "$folder/modem" status | sed -n 's/ *IMEI *//p')
[ "$imei" = 004999010640000 ] || { echo "arm: zopctl read the IMEI as \"$imei\"" >&2; exit 1; }
echo "arm: zopctl reads a simulated modem: IMEI $imei"
