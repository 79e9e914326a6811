#!/bin/sh
# A demonstration: zopctl loads the module and lets it read a simulated modem, write new firmware
# to it and save the memory of one that has crashed. Needs no modem and leaves nothing behind.
# Usage: demo.sh BUILD_DIR
set -e
build=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT INT TERM

say() {
  echo
  echo "$@"
  echo
}

# A small image set: random bytes, and a version.
noise() { head -c "$2" /dev/urandom > "$folder/$1"; }
noise QSC6270.ram 50000
noise partition.mbn 600
for loader in dbl fsbl osbl; do noise $loader.mbn 40000; done
noise amss.mbn 600000
printf 'Q71XEB22.001\n' | tee "$folder/version_info" >> "$folder/amss.mbn"

echo "A host loads $build/libzop_module.so.0 and opens a simulated modem:"
echo
"$build/zopctl" --sim status
say "It writes new firmware to a simulated modem, whose clock runs 20 times as fast:"
"$build/zopctl" --sim --sim-speed 20 firmware update "$folder" --yes
say "It saves the memory of one that has crashed:"
"$build/zopctl" --sim=crashed dump -o "$folder"
