#!/bin/sh
# PPP link data from a real kernel: an interface named ppp0 with a peer and a process named pppd, in
# their own namespace. Skipped (77) if the kernel allows none.
# Usage: ppp0_namespace.sh PROGRAM
program=$(readlink -f "$1")
if [ "$2" != inside ]; then
  command -v ip > /dev/null || { echo "skipped: no ip command"; exit 77; }
  unshare -r -m -n -p -f --mount-proc true 2> /dev/null || {
    echo "skipped: this kernel grants no namespaces"
    exit 77
  }
  exec unshare -r -m -n -p -f --mount-proc sh "$0" "$program" inside
fi
fail() { echo "ppp0_namespace: $*" >&2; exit 1; }
expect() { "$program" | grep -qx "$1" || fail "no \"$1\" in: $("$program")"; }
work=$(mktemp -d) || exit 1
trap 'kill "$daemon" 2> /dev/null; rm -rf "$work"' EXIT

expect "local not connected"
ip link add ppp0 type veth peer name other0 2> /dev/null || { echo "skipped: no veth"; exit 77; }
ip link set ppp0 up
expect "local connecting"
ip addr add 10.64.64.64 peer 10.112.112.112 dev ppp0
expect "local 10.64.64.64"
expect "peer 10.112.112.112"
"$program" | grep -qE "^rx [0-9]{1,6}$" || fail "no counters"
cp "$(command -v sleep)" "$work/pppd"
"$work/pppd" 600 &
daemon=$!
until grep -q pppd "/proc/$daemon/comm"; do :; done  # it has not become pppd at once
expect "pppd $daemon"
echo "nameserver 10.0.0.1" > "$work/resolv.conf"
mount --bind "$work/resolv.conf" /etc/resolv.conf || { echo "skipped: no bind mount"; exit 77; }
expect "resolver 16777226"
