#!/bin/sh
# A host unloads the library in the middle of things. Usage: unloaded.sh SIMULATOR HOST LIBRARY
folder=$(mktemp -d) || exit 1
"$1" --link "$folder/modem" > "$folder/path" &
trap 'kill $!; rm -rf "$folder"' EXIT
until [ -s "$folder/path" ]; do sleep 0.05; done
"$2" "$3" "$folder/modem"
