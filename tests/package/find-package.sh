#!/usr/bin/env bash
# A CMake project that finds the unpacked package.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

build_project "$here/find-package" "$work/find-package" "-DCMAKE_PREFIX_PATH=$unpacked"
expect_host "$work/find-package/host.exe"
