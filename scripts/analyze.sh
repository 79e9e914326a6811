#!/bin/sh
# Runs gcc's analyzer over the module; it follows pointers and descriptors across calls. It supports
# only the part of C++ that the module uses.
set -e
build=build/analyzer
mkdir -p "$build"
git ls-files 'core/*.cpp' 'link/*.cpp' 'commands/*.cpp' 'report/*.cpp' 'module/*.cpp' \
  'download/*.cpp' | xargs -P "$(nproc)" -I SOURCE sh -c 'g++ -std=gnu++20 -I. -O1 -fno-exceptions \
    -fno-rtti -fno-threadsafe-statics -fanalyzer -Werror -S \
    -o "'"$build"'/$(echo SOURCE | tr / _).s" SOURCE || exit 255'
echo "gcc analyzer: clean"
