#!/bin/sh
# The demonstration: zopctl loads the module, opens a simulated modem of its own and shows what a
# host sees. Needs no modem and leaves nothing behind. Usage: demo.sh BUILD_DIR
set -e
build=$1
echo "A host loads $build/libzop_module.so.0 and opens a simulated modem:"
echo
"$build/zopctl" --sim status
