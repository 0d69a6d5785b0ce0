#!/usr/bin/env bash
# Packs what a build installs: package.sh BUILD_DIRECTORY DIRECTORY. Writes kestrovane-VERSION-win64.zip and
# kestrovane-VERSION-win64-symbols.zip into DIRECTORY. Equal files result in equal zips: the entries are sorted, their times
# are that of the commit, and nothing of the machine's users is stored.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "$1" && pwd)
mkdir -p "$2"
output=$(cd "$2" && pwd)
version=$(sed -nE 's/^project\(Kestrovane VERSION ([0-9.]+).*/\1/p' "$root/CMakeLists.txt")
name=kestrovane-$version-win64

first_zip_date=315532800 # seconds; 1980-01-01, for sources without a commit
date=${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || echo "$first_zip_date")}

stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
export TZ=UTC # a zip stores local times

# pack NAME: zips the folder of that name.
pack() {
    chmod -R u=rwX,go=rX "$stage/$1"
    find "$stage/$1" -exec touch -d "@$date" {} +
    rm -f "$output/$1.zip"
    (cd "$stage" && find "$1" | LC_ALL=C sort | zip -q -X -9 -@ "$output/$1.zip")
    echo "$output/$1.zip"
}

for component in runtime agent development documentation; do
    cmake --install "$build" --prefix "$stage/$name" --component "$component" >/dev/null
done
cmake --install "$build" --prefix "$stage/$name-symbols" --component symbols >/dev/null
pack "$name"
pack "$name-symbols"
