#!/usr/bin/env bash
# Makes the Debian package of the working tree, checks it with lintian, and leaves it in build/package.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

version=$(sed -n 's/^project(kelp VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
folder=build/package
tree=$folder/kelp-$version

rm -rf "$folder"
mkdir -p "$tree"
git ls-files -co --exclude-standard -z | tar --null --files-from=- --create | tar --extract --directory "$tree"

# What Kelp is built with is named in one place.
cp -r packaging/debian "$tree/debian"
rm "$tree/debian/control.in"
awk -v list="$(awk '$1 == "build" { gsub(/\|/, " | ", $2); print " " $2 "," }' packaging/packages.txt)" \
    '{ if ($0 == "@BUILD_DEPENDS@") print list; else print }' packaging/debian/control.in >"$tree/debian/control"
date=$(git log -1 --format=%cD 2>/dev/null || date -R)
cat >"$tree/debian/changelog" <<TEXT
kelp ($version) unstable; urgency=medium

  * What users notice is told in CHANGELOG.md.

 -- $(sed -n 's/^Maintainer: //p' packaging/debian/control.in)  $date
TEXT

(cd "$tree" && dpkg-buildpackage --build=binary --unsigned-changes --no-sign >../build.log 2>&1) || {
    tail -n 30 "$folder/build.log" >&2
    echo "package: the build failed; all of it is in $folder/build.log" >&2
    exit 1
}
lintian --fail-on error "$folder"/kelp_*.changes
echo "Wrote $(echo "$folder"/kelp_*.deb)"
