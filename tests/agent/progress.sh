#!/bin/sh
# The progress bar on a terminal: progress.sh EMULATOR AGENT. It must show the scan, and move within one large file; a
# message that comes meanwhile has a line of its own.
set -eu

emulator=$1
agent=$2
prefix=${KESTROVANE_PREFIX:-$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)/build/wine}
work=$prefix/drive_c/progress-$$
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/live"
truncate -s 384M "$work/live/large"
: >"$work/live/missing"

# A file that goes away while the one before it is copied.
(
    until [ -e "$work"/target/*/large ]; do sleep 0.01; done
    rm "$work/live/missing"
) &

windows="C:\\progress-$$"
script -qec "stty cols 100; '$emulator' '$agent' backup '$windows\\live' '$windows\\target'" "$work/terminal" \
    </dev/null >/dev/null || [ $? -eq 3 ] # done in part
tr '\r\033' '\n\n' <"$work/terminal" >"$work/lines"

expect() {
    grep -qE -- "$1" "$work/lines" || { echo "progress: no line matches $1" >&2; cat "$work/lines" >&2; exit 1; }
}
expect 'Scanning: 2 files'
expect 'Backing up \[#+\.+\] 0/2, [1-9][0-9]*/384 MiB, [0-9]+ MiB/s, [0-9]+:[0-9]{2} left'
expect '2/2, 384/384 MiB, '
expect 'kestrovane-agent: .*missing: '
if grep -E 'MiB.*kestrovane-agent' "$work/lines" >&2; then
    echo 'progress: a message is in the line of the bar' >&2
    exit 1
fi
expect 'files +1'
