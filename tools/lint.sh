#!/usr/bin/env bash
# Checks all sources: lint.sh BUILD_DIRECTORY [shipped]. The directory is configured, for its compile commands. With
# "shipped", clang-tidy, which takes most of the time, leaves out tests and benchmarks, and the checks of the analyzer.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$1
scope=${2:-all}
work=build/lint
longest_file=300 # lines

# Folders of a later layout may be missing.
folders=()
for folder in exports win32 frame paths fileops volumes security restore cache module agent bench examples tests; do
    [[ -d $folder ]] && folders+=("$folder")
done
mapfile -t all < <(find "${folders[@]}" -name '*.cpp' -o -name '*.h' | sort)
mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' | sort)
mapfile -t headers < <(find "${folders[@]}" -name '*.h')

failed=0

# check NAME COMMAND...: runs one of the checks; a failure lets the others run, and fails the whole at the end.
check() {
    echo "$1"
    "${@:2}" || failed=1
}

check_lengths() { # the public header is the manual, too
    local file lines too_long=0
    for file in "${all[@]}"; do
        lines=$(wc -l <"$file")
        if [[ $lines -gt $longest_file && $file != exports/Kestrovane.h ]]; then
            echo "$file: $lines lines, more than $longest_file" >&2
            too_long=1
        fi
    done
    return "$too_long"
}

check_cppcheck() {
    # Foreign hosts are built without the definitions of the library's own build.
    local -a ours
    mapfile -t ours < <(printf '%s\n' "${sources[@]}" | grep -v '^tests/package/')
    # c_str() is how a string is cut at its NUL; GoogleTest's macros are not expanded
    cppcheck --quiet --std=c++20 --language=c++ --platform=win64 --error-exitcode=1 --inline-suppr -j "$(nproc)" \
        --enable=warning,performance,portability \
        --suppress=passedByValue --suppress=missingIncludeSystem --suppress=noExplicitConstructor \
        --suppress=stlcstrReturn --suppress=stlcstrParam --suppress=syntaxError:tests/* --suppress=unknownMacro:tests/* \
        -DKESTROVANE_BUILD -D_WIN32 -D__cdecl= -I exports -I . "${ours[@]}"
}

# clang does not find the headers of the cross compiler by itself, and cannot read its precompiled ones.
mkdir -p "$work"
sed -E 's/ -Winvalid-pch -include [^ "]+cmake_pch\.hxx//' "$build/compile_commands.json" >"$work/compile_commands.json"
gcc=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")
export tidy_arguments=""
for argument in --target=x86_64-w64-mingw32 -nostdinc++ -nostdlibinc \
    "-isystem$gcc/include/c++" "-isystem$gcc/include/c++/x86_64-w64-mingw32" "-isystem$gcc/include/c++/backward" \
    -isystem/usr/x86_64-w64-mingw32/include -Wno-unknown-warning-option; do
    tidy_arguments+=" --extra-arg=$argument"
done
if [[ $scope == shipped ]]; then
    tidy_arguments+=" --checks=-clang-analyzer-*"
fi

# A source is checked again only when it, a header, the configuration or this file has changed since it passed.
tidy_one() {
    local stamp=$1/$2.passed-$3 full=$1/$2.passed-all passed
    for passed in "$stamp" "$full"; do
        if [[ $passed -nt $2 && $passed -nt $1/newest-header ]]; then
            return
        fi
    done
    mkdir -p "$(dirname "$stamp")"
    # shellcheck disable=SC2086 # one argument a word
    clang-tidy --quiet -p "$1" $tidy_arguments "$2" && touch "$stamp"
}
export -f tidy_one
newest=$(ls -t "${headers[@]}" .clang-tidy tests/.clang-tidy tools/lint.sh | sed 1q)
touch -r "$newest" "$work/newest-header"

check_tidy() {
    local left_out='^(examples|tests/package|tests/documents)/' checked # built from the package, without compile commands here
    if [[ $scope == shipped ]]; then
        left_out='^(tests|bench|examples)/'
    fi
    mapfile -t checked < <(printf '%s\n' "${sources[@]}" | grep -vE "$left_out")
    printf '%s\0' "${checked[@]}" |
        xargs -0 -n 1 -P "$(nproc)" bash -c 'tidy_one "$0" "$2" "$1" || exit 1' "$work" "$scope"
}

check clang-format clang-format --dry-run --Werror "${all[@]}"
check lengths check_lengths
check layers tools/layers.sh
check cppcheck check_cppcheck
check clang-tidy check_tidy
exit "$failed"
