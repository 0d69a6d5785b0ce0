# What the tests of the package share; sourced by them. Each is called as NAME.sh WORK_DIRECTORY EMULATOR COMPILER.
set -euo pipefail

work=$1
emulator=$2
compiler=$3
sources=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
here=$sources/tests/package
unpacked=$(echo "$work"/unpacked\ here/kestrovane-*-win64)
prefix=${KESTROVANE_PREFIX:-$sources/build/wine}
unset CMAKE_PREFIX_PATH PKG_CONFIG_PATH CPATH LIBRARY_PATH

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# build_project SOURCES BUILD [OPTION...]: configures and builds a project as a stranger would.
build_project() {
    rm -rf "$2"
    cmake -S "$1" -B "$2" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR=x86_64 \
        "-DCMAKE_CXX_COMPILER=$compiler" -DCMAKE_RC_COMPILER=x86_64-w64-mingw32-windres "${@:3}"
    cmake --build "$2"
}

# expect_host PROGRAM: runs Host.cpp and compares what it prints.
expect_host() {
    local printed expected
    printed=$("$emulator" "$1" | tr -d '\r')
    expected='frame/FileManager.cpp::147::SetVssFileManagerLogger
frame/FileManager.cpp::154::SendKA
keep-alive 600
name f.tar.gz
caught 0x8007000E'
    [[ $printed == "$expected" ]] || fail "the host printed: $printed"
}
