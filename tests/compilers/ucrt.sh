#!/usr/bin/env bash
# Compiles the library with clang for the UCRT: ucrt.sh COMPILER SOURCE... Only the syntax and the types are checked, because
# this machine has no C++ library for that runtime. COMPILER is the cross compiler, whose headers clang does not find by itself.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/../.."
gcc=$(dirname "$("$1" -print-libgcc-file-name)")
shift

clang=(clang++ --target=x86_64-w64-mingw32 -std=gnu++20
    -nostdinc++ -nostdlibinc -isystem "$gcc/include/c++" -isystem "$gcc/include/c++/x86_64-w64-mingw32"
    -isystem "$gcc/include/c++/backward" -isystem /usr/x86_64-w64-mingw32/include
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    -D_UCRT -DKESTROVANE_BUILD -DUNICODE -D_UNICODE -DWIN32_LEAN_AND_MEAN -D_WIN32_WINNT=0x0601 -I exports -I .)

# The large headers are read once.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"${clang[@]}" -x c++-header exports/Kestrovane.h -o "$work/header.pch"
printf '%s\0' "$@" |
    xargs -0 -n 1 -P "$(nproc)" "${clang[@]}" -include-pch "$work/header.pch" -fsyntax-only
