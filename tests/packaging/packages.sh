#!/bin/sh
# Installs the packages into a scratch root, builds the example host by what they brought and lets it
# read their simulated modem, removes them, and finds nothing left. Usage: packages.sh DEB_FOLDER
debs=$(ls "$1"/*.deb | grep -v dbgsym)
fail() { echo "packages: $*" >&2; exit 1; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
root=$work/root
mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/triggers"
: > "$root/var/lib/dpkg/status"
in_root() {
  fakeroot dpkg --root="$root" --force-depends --force-script-chrootless "$@" > "$work/log" 2>&1 ||
    { cat "$work/log"; fail "dpkg $1"; }
}
what_is_there() { find "$root" -path "$root/var" -prune -o ! -type d -print; }

# What each package holds, with * for the machine's folder, scenarios and schemas.
for deb in $debs; do
  dpkg-deb --fsys-tarfile "$deb" | tar t | grep -v '/$' | sed "s|^\.|$(dpkg-deb -f "$deb" Package):|"
done | sed "s|/lib/[^/]*-linux-[^/]*|/lib/*|; s|scenarios/.*|scenarios/*|; s|schema/.*|schema/*|; s|module/fleet/.*|module/fleet/*|; s|so\.0\.0\..*|so.0.0.*|" |
  LC_ALL=C sort -u > "$work/contents"
diff "$(dirname "$0")/contents.txt" "$work/contents" || fail "the contents differ"

in_root --install $debs
libraries=$(dirname "$(find "$root/usr/lib" -name libzop_module.so)")
sh "$(dirname "$0")/check_hardening.sh" "$libraries/libzop_module.so" "$root/usr/bin/zopctl" \
  "$root/usr/bin/zop-modem-sim" || fail "hardening"
export LD_LIBRARY_PATH="$libraries"
sh "$(dirname "$0")/example_host.sh" "$root/usr/share/doc/libzop-module-dev/examples/host.c" \
  "$libraries" "$root/usr/bin/zop-modem-sim"
case $? in 0) ;; 77) echo "packages: the host was not run" ;; *) fail "the example host" ;; esac
"$root/usr/bin/zopctl" --sim=roaming status > /dev/null || fail "zopctl"

in_root --purge zop-tools libzop-module-dev libzop-module0
left=$(what_is_there)
[ -z "$left" ] || fail "left behind: $left"
echo "packages: installed, used and removed without a trace"
