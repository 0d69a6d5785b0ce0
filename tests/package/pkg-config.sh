#!/usr/bin/env bash
# A host that is built with the compiler and the flags of pkg-config.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

rm -rf "$work/pkg-config"
mkdir -p "$work/pkg-config"
export PKG_CONFIG_LIBDIR=$unpacked/lib/pkgconfig
pkg-config --exact-version="$(sed -nE 's/^project\(Kestrovane VERSION ([0-9.]+).*/\1/p' "$sources/CMakeLists.txt")" kestrovane
eval "flags=($(pkg-config --cflags --libs kestrovane))" # blanks in paths are escaped
"$compiler" -std=c++17 "$here/Host.cpp" "${flags[@]}" -o "$work/pkg-config/host.exe"
cp "$unpacked"/bin/*.dll "$work/pkg-config"
expect_host "$work/pkg-config/host.exe"
