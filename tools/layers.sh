#!/usr/bin/env bash
# Checks the layers of the library: an include of a folder that is not listed here fails. Includes of the own folder are free.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

declare -A allowed=(
    [exports]=""
    [win32]="" # no state and no host; only the BSTR classes are known to it
    [frame]="exports win32"
    [paths]="exports win32 frame"
    [fileops]="exports win32 frame paths"
    [volumes]="exports win32"
    [security]="exports win32 frame"
    [restore]="exports win32 frame"
    [cache]="exports win32 frame"
    [module]="exports win32 frame volumes"
    [agent]="exports"
    [bench]="exports"
    [examples]="exports"
)

# The folder of an include: that of the public headers has no folder in their names.
folder_of() {
    case $1 in
    Kestrovane.h | KestrovaneBstr.h) echo exports ;;
    */*) echo "${1%%/*}" ;;
    esac
}

failed=0
reject() {
    echo "$1 includes $2: $3" >&2
    failed=1
}

for folder in "${!allowed[@]}"; do
    [[ -d $folder ]] || continue
    while IFS=: read -r file include; do
        target=$(folder_of "$include")
        [[ -z $target || $target == "$folder" || ! -d $target ]] && continue
        [[ $folder == win32 && $include == KestrovaneBstr.h ]] && continue
        if [[ " ${allowed[$folder]} " != *" $target "* ]]; then
            reject "$file" "$include" "$folder may include: ${allowed[$folder]:-nothing}"
        elif [[ $folder == agent && $include != Kestrovane.h ]]; then
            reject "$file" "$include" "the agent is a host: <Kestrovane.h> alone"
        fi
    done < <(grep -rnoE '^#include ["<][^">]+' "$folder" --include='*.cpp' --include='*.h' |
        sed -E 's/^([^:]+):[0-9]+:#include ["<]/\1:/')
done
exit "$failed"
