#!/usr/bin/env bash
# A CMake project that builds the sources as a part of its own, through FetchContent. Without optimisation, to be quick.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

build_project "$here/subproject" "$work/subproject" "-DKESTROVANE_SOURCES=$sources" -DCMAKE_BUILD_TYPE=Debug
cp "$unpacked"/bin/lib*.dll "$work/subproject" # the runtime of the toolchain
expect_host "$work/subproject/host.exe"
if cmake --install "$work/subproject" --prefix "$work/subproject/installed" && [[ -e $work/subproject/installed/bin ]]; then
    fail "the library is installed with a project that did not ask for it"
fi
