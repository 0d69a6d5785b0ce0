#!/usr/bin/env bash
# Builds the package of the last commit twice, in two folders, and compares the zips: package-check.sh DIRECTORY. No compiler
# cache is used: it could pass the first build's files on to the second.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
mkdir -p "$1"
work=$(cd "$1" && pwd)
commit=$(git -C "$root" rev-parse HEAD) # the branch may move on meanwhile
SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct "$commit")
export SOURCE_DATE_EPOCH CCACHE_DISABLE=1

[[ -z $(git -C "$root" status --porcelain) ]] || echo "The changes that are not committed are not part of this check."
for folder in first a/second-and-longer; do
    rm -rf "${work:?}/$folder"
    mkdir -p "$work/$folder"
    git -C "$root" archive "$commit" | tar -x -C "$work/$folder"
    "$work/$folder/run" package
done

failed=0
for zip in "$work"/first/build/package/*.zip; do
    name=$(basename "$zip")
    if cmp "$zip" "$work/a/second-and-longer/build/package/$name"; then
        echo "$name: $(stat -c %s "$zip") equal bytes, SHA-256 $(sha256sum <"$zip" | cut -c 1-64)"
    else
        failed=1
    fi
done
exit "$failed"
