#!/usr/bin/env bash
# Packs the build and unpacks the zip at another place: contents.sh WORK_DIRECTORY EMULATOR COMPILER BUILD. What a user needs
# is there, and the links of the documents lead to files of the package.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
build=$4

rm -rf "$work"
"$sources/tools/package.sh" "$build" "$work/zip"
mkdir -p "$work/unpacked here"
(cd "$work/unpacked here" && cmake -E tar xf "$work"/zip/kestrovane-*-win64.zip)
unpacked=$(echo "$work"/unpacked\ here/kestrovane-*-win64)

expected="bin/Kestrovane.dll bin/kestrovane-agent.exe bin/libgcc_s_seh-1.dll bin/libssp-0.dll bin/libstdc++-6.dll
bin/libwinpthread-1.dll include/Kestrovane.h include/KestrovaneBstr.h lib/cmake/Kestrovane/KestrovaneConfig.cmake
lib/cmake/Kestrovane/KestrovaneConfigVersion.cmake lib/cmake/Kestrovane/KestrovaneTargets-release.cmake
lib/cmake/Kestrovane/KestrovaneTargets.cmake lib/libKestrovane.dll.a lib/pkgconfig/kestrovane.pc"
found=$(cd "$unpacked" && find bin include lib -type f | LC_ALL=C sort | xargs)
[[ $found == "$(xargs <<<"$expected")" ]] || fail "bin, include and lib hold: $found"

documents=$unpacked/share/doc/kestrovane
for document in README.md CHANGELOG.md docs/host-guide.md examples/restore/Main.cpp reference/index.html notices/gcc.txt notices/GPL-3.txt \
    notices/mingw-w64.txt; do
    [[ -s $documents/$document ]] || fail "the package has no $document"
done
grep -q 'GCC RUNTIME LIBRARY EXCEPTION' "$documents/notices/gcc.txt" || fail "the exception of the runtime is missing"

while IFS=: read -r document link; do
    target=$(dirname "$document")/${link%%#*}
    [[ -e $target ]] || fail "${document#"$unpacked"/} links to $link, which is not in the package"
done < <(find "$documents" -name '*.md' -exec grep -HoE '\]\([^)# ]+' {} + | sed 's/\](//' | grep -v ':[a-z]*://')

# No path of the machine that built it; symbols are in a zip of their own.
if grep -rqF "$sources" "$unpacked"; then
    fail "the place of the sources is in $(grep -rlF "$sources" "$unpacked")"
fi
symbols=$(unzip -Z1 "$work"/zip/kestrovane-*-symbols.zip | grep -v '/$' | sed 's,.*/,,' | LC_ALL=C sort | xargs)
[[ $symbols == "Kestrovane.dll.debug kestrovane-agent.exe.debug" ]] || fail "the symbols are: $symbols"
