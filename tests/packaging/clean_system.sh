#!/usr/bin/env bash
# Installs Kelp's Debian package in a clean system, runs, upgrades and purges it there. Needs root (or sudo) and a mirror
# of the distribution; the system lives in a temporary folder.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../.."
[ "$(id -u)" = 0 ] || exec sudo --preserve-env=http_proxy,https_proxy,no_proxy "$0" "$@"

tools/package.sh
package=$(echo build/package/kelp_*.deb)

system=$(mktemp -d)
chmod 755 "$system" # root there, too, for the user in it
leave() {
    local folder
    for folder in dev/pts dev proc; do
        ! mountpoint -q "$system/$folder" || umount "$system/$folder"
    done
    rm -rf --one-file-system "$system"
}
trap leave EXIT

say() { echo "clean system: $*"; }
in_system() { chroot "$system" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
as_user() { in_system setpriv --reuid=1000 --regid=1000 --clear-groups env HOME=/home/ada "$@"; }

# Where this system gets its packages from, the clean one does, too.
. /etc/os-release
mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | sed -n 1p)
say "$VERSION_CODENAME from $mirror"
debootstrap --variant=minbase "$VERSION_CODENAME" "$system" "$mirror" >build/package/debootstrap.log 2>&1 ||
    { tail "build/package/debootstrap.log"; exit 1; }
mount --bind /dev "$system/dev"
mount -t proc proc "$system/proc"
cp /etc/resolv.conf /etc/hosts "$system/etc/"
for part in sources.list sources.list.d apt.conf.d trusted.gpg.d keyrings; do
    [ ! -e "/etc/apt/$part" ] || { rm -rf "$system/etc/apt/$part" && cp -r "/etc/apt/$part" "$system/etc/apt/"; }
done
[ ! -e /etc/ssl/certs/ca-certificates.crt ] || install -D /etc/ssl/certs/ca-certificates.crt "$system/etc/ssl/certs/ca-certificates.crt"
install -d -o 1000 -g 1000 "$system/home/ada"

say "install"
cp "$package" "$system/root/kelp.deb"
in_system apt-get -q update >/dev/null
in_system apt-get -q install -y --no-install-recommends /root/kelp.deb >build/package/install.log 2>&1 ||
    { tail build/package/install.log; exit 1; }

run_it() {
    as_user kelp --version
    as_user kelp --help >/dev/null
    as_user kelp --snapshot /home/ada/stills
    [ "$(find "$system/home/ada/stills" -name '*.png' | wc -l)" -ge 18 ] || { say "stills are missing"; exit 1; }
    rm -r "$system/home/ada/stills"
    [ "$(find "$system/usr/share/kelp/tray" -name 'app.kelp.Kelp*.svg' | wc -l)" -ge 100 ] || { say "tray pictures are missing"; exit 1; }
}
say "run"
run_it
[ -z "$(in_system dpkg --verify kelp)" ]

say "upgrade"
in_system dpkg-deb --raw-extract /root/kelp.deb /root/next
sed -i 's/^Version: .*/&+next/' "$system/root/next/DEBIAN/control"
in_system dpkg-deb --root-owner-group --build /root/next /root/next.deb >/dev/null
in_system apt-get -q install -y --no-install-recommends /root/next.deb >>build/package/install.log 2>&1
in_system dpkg-query -W -f '${Version} ${db:Status-Status}\n' kelp | grep -q '+next installed'
run_it

say "purge"
files=$(in_system dpkg -L kelp)
in_system apt-get -q purge -y kelp >>build/package/install.log 2>&1
left=$(for file in $files; do [ ! -f "$system$file" ] || echo "$file"; done)
[ -z "$left" ] || { say "left behind: $left"; exit 1; }
[ -z "$(find "$system/etc" "$system/var/lib/dpkg/info" -name '*kelp*')" ]
say "all is well"
