#!/usr/bin/env bash
# Checks all sources: lint.sh BUILD_DIRECTORY (configured, for its compile commands).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$1
library=(frame paths fileops volumes security restore cache exports agent)

mapfile -t all < <(find "${library[@]}" tests bench -name '*.cpp' -o -name '*.h' | sort)
mapfile -t sources < <(find "${library[@]}" -name '*.cpp' | sort)

echo "clang-format"
clang-format --dry-run --Werror "${all[@]}"

echo "cppcheck" # c_str() is how a text is cut at its terminator
cppcheck --quiet --std=c++20 --language=c++ --platform=win64 --error-exitcode=1 --inline-suppr -j "$(nproc)" \
    --enable=warning,performance,portability \
    --suppress=passedByValue --suppress=missingIncludeSystem --suppress=noExplicitConstructor \
    --suppress=stlcstrReturn --suppress=stlcstrParam \
    -DKESTROVANE_BUILD -D_WIN32 -D__cdecl= -I exports -I . "${sources[@]}"

# clang does not know where the cross compiler keeps its headers.
echo "clang-tidy"
gcc=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")
target=(--target=x86_64-w64-mingw32 -nostdinc++ -nostdlibinc
    -isystem "$gcc/include/c++" -isystem "$gcc/include/c++/x86_64-w64-mingw32" -isystem "$gcc/include/c++/backward"
    -isystem /usr/x86_64-w64-mingw32/include)
extra=()
for argument in "${target[@]}" -Wno-unknown-warning-option; do
    extra+=("--extra-arg=$argument")
done
printf '%s\0' "${sources[@]}" | xargs -0 -n 4 -P "$(nproc)" clang-tidy --quiet -p "$build" "${extra[@]}"
