#!/usr/bin/env bash
# Builds the HTML reference from the public headers: docs.sh DIRECTORY. A warning of the generator fails the build.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
export DOCS_OUTPUT=$1
KESTROVANE_VERSION=$(sed -nE 's/^project\(Kestrovane VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
export KESTROVANE_VERSION

rm -rf "$DOCS_OUTPUT/html"
mkdir -p "$DOCS_OUTPUT"
doxygen docs/reference/Doxyfile
