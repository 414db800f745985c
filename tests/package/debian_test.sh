#!/usr/bin/env bash
# The packages of both architectures in a fresh Debian 12: they install side by side, hosts build and
# run against them, rowcopy copies, manual pages show, and after their removal nothing is left. Run
# by tools/debian --test, as root.
#   debian_test.sh PACKAGES_DIR MIRROR
set -euo pipefail
packages=$1 mirror=$2
here=$(cd "$(dirname "$0")" && pwd)
root=$(mktemp -d)
trap 'umount -q "$root/proc" "$root/dev/null" || true; rm -rf --one-file-system "$root"' EXIT
chmod 755 "$root"
debootstrap --variant=minbase --include=ca-certificates bookworm "$root" "$mirror"
mount -t proc proc "$root/proc"

inside() {
  chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 TMPDIR=/tmp \
    DEBIAN_FRONTEND=noninteractive "$@"
}
install() { inside apt-get install -y --no-install-recommends "$@"; }
# Every file and package, but for what apt and the loader keep for themselves.
state() {
  inside dpkg-query -W -f='${binary:Package} ${db:Status-Abbrev}\n'
  inside find / -xdev \( -path /proc -o -path /tmp -o -path /var/cache -o -path /var/lib/apt \
    -o -path /var/log \) -prune -o -printf '%p %l\n' | sort
}

inside dpkg --add-architecture i386
inside apt-get update
install g++-multilib cmake ninja-build pkgconf man-db file {zlib1g,libstdc++6,libc6-dev}:i386
state >"$root/tmp/before"

mkdir "$root/tmp/packages"
for package in "$packages"/*.deb; do
  name=$(basename "$package")
  cp "$package" "$root/tmp/packages/${name%%_*}_${name##*_}"
done
cp -r "$here/host" "$root/tmp/host"
install /tmp/packages/{libcomnlib1,libcomnlib-dev}_{i386,amd64}.deb \
  /tmp/packages/comnlib-{home,doc}_all.deb /tmp/packages/comnlib-tools_amd64.deb

for kind in 32:i386 64:x86_64; do
  bits=${kind%:*} target=${kind#*:}
  inside cmake -S /tmp/host -B "/tmp/$target" -G Ninja "-DCMAKE_C_FLAGS=-m$bits" \
    "-DCMAKE_CXX_FLAGS=-m$bits"
  inside cmake --build "/tmp/$target"
  inside ctest --test-dir "/tmp/$target" --output-on-failure --no-tests=error
  inside file -L "/tmp/$target/host_comnlib" | grep "ELF $bits-bit"
  flags=$(inside env "PKG_CONFIG_PATH=/usr/lib/$target-linux-gnu/pkgconfig" \
    pkg-config --cflags --libs comnlib)
  # The flags are words of their own.
  # shellcheck disable=SC2086
  inside cc -std=c11 /tmp/host/home.c -o /tmp/home $flags
  [ "$(inside /tmp/home)" = /usr/share/comnlib/home/locales/locales.dat ]
done

# copies ARCHITECTURE: the program is of this one, and copies
copies() {
  inside file -L /usr/bin/rowcopy | grep "ELF $1-bit"
  inside sh -c 'cd /usr/share/comnlib/examples &&
    rowcopy birdstrikes.layout birdstrikes.csv /tmp/records && rm /tmp/records'
}
copies 64
install /tmp/packages/comnlib-tools_i386.deb
copies 32

for page in "1 rowcopy" "3 comnlib" "3 comnlib_convert" "5 comnlib_home" "5 comnlib_config"; do
  # A section and a name.
  # shellcheck disable=SC2086
  inside env MANWIDTH=80 man $page >"$root/tmp/page" 2>"$root/tmp/faults"
  [ "$(wc -l <"$root/tmp/page")" -gt 40 ] && [ ! -s "$root/tmp/faults" ] ||
    { echo "man $page:"; cat "$root/tmp/faults"; exit 1; }
done
inside man -f comnlib_convert
[ -e "$root/usr/share/doc/comnlib/html/index.html" ]

# shellcheck disable=SC2046
inside apt-get purge -y $(inside dpkg-query -W -f='${binary:Package}\n' '*comnlib*')
state | diff "$root/tmp/before" -
