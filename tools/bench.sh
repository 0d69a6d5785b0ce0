#!/usr/bin/env bash
# Runs the benchmark: bench.sh CALLERS_DIRECTORY PROGRAM [OPTION...]. Creates the directories that it measures, because that takes much
# longer from within Wine.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
caller=$1
program=$2
shift 2
place=${KESTROVANE_PREFIX:-$root/build/wine}/drive_c/kestrovane-bench

# files DIRECTORY COUNT: creates empty files.
files() {
    mkdir -p "$1"
    (cd "$1" && seq -f 'a file with number %06.0f.txt' "$2" | tr '\n' '\0' | xargs -0 touch)
}

# tree DIRECTORY FOLDERS FILES: creates folders, each with files.
tree() {
    local folder
    for folder in $(seq "$2"); do
        files "$1/folder-$folder" "$3"
    done
}

# Equal trees, one for each measured deletion.
trees_to_delete() {
    tree "$place/delete/0" 20 1000
    local number
    for number in $(seq 5); do
        cp -al "$place/delete/0" "$place/delete/$number"
    done
}

# agent_source DIRECTORY FOLDERS: creates folders, each with 100 files.
agent_source() {
    local folder file
    for folder in $(seq "$2"); do
        mkdir -p "$1/folder-$folder"
        for file in $(seq 100); do
            printf 'content of file %d in folder %d\n' "$file" "$folder" >"$1/folder-$folder/$file.txt"
        done
    done
}

agent_large_sources() {
    agent_source "$place/agent-many" 200
    mkdir -p "$place/agent-large"
    head -c 1G /dev/urandom >"$place/agent-large/1G"
}

# The program sees the Wine prefix alone: the chart is written there first.
options=()
chart=
while [[ $# -gt 0 ]]; do
    if [[ $1 == --svg && $# -gt 1 ]]; then
        chart=$2
        options+=(--svg 'C:\kestrovane-bench\chart.svg')
        shift 2
    else
        options+=("$1")
        shift
    fi
done

rm -rf "$place"
trap 'rm -rf "$place"' EXIT
for count in 1000 10000 100000; do
    files "$place/files-$count" "$count"
done
tree "$place/tree" 5000 10
files "$place/owners" 3000
mkdir -p "$place/cache" "$place/copied" "$place/copy"
: >"$place/copy/0"
for size in 8K 1M 256M; do
    head -c "$size" /dev/zero >"$place/copy/$size"
done
trees_to_delete
agent_source "$place/agent" 20
if [[ " ${options[*]:-} " == *" agent-large "* ]]; then
    agent_large_sources
fi
"$root/tools/wine.sh" "$program" ${options[@]+"${options[@]}"}
if [[ -n $chart ]]; then
    (cd "$caller" && cp "$place/chart.svg" "$chart")
fi
