#!/bin/sh
# Runs a command beside a simulated modem at /dev/tts/USB1, in a namespace with a /dev of its own.
# 77 where the kernel grants none. Usage: with_modem.sh SIMULATOR COMMAND...
if [ "$1" != inside ]; then
  unshare -r -m true 2> /dev/null || { echo "skipped: this kernel grants no namespaces"; exit 77; }
  exec unshare -r -m sh "$0" inside "$@"
fi
shift
simulator=$1
shift
dev=$(mktemp -d) || exit 1
{ mount -t tmpfs none "$dev" && mkdir "$dev/pts" "$dev/tts" "$dev/old" &&
  mount --rbind /dev "$dev/old" && mount --bind /dev/pts "$dev/pts"; } || exit 77
for node in null zero full random urandom tty; do ln -s "old/$node" "$dev/$node"; done
ln -s pts/ptmx "$dev/ptmx"
mount --rbind "$dev" /dev || exit 77
"$simulator" --link /dev/tts/USB1 > "$dev/path" &
for try in $(seq 100); do [ -s "$dev/path" ] || sleep 0.1; done
"$@"
result=$?
kill $!
exit $result
