#!/usr/bin/env bash
# The examples of the unpacked package: examples.sh WORK_DIRECTORY EMULATOR COMPILER FILE_LOCKER. Each is built as a user
# builds it, is run, and what it did is checked from outside.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
locker=$4

name=package-examples-$$
disk=$prefix/drive_c/$name # C:\NAME in the programs
windows="C:\\$name"
locked=
trap 'unlock; rm -rf "$disk"' EXIT

build_example() {
    build_project "$unpacked/share/doc/kestrovane/examples/$1" "$work/examples/$1" "-DCMAKE_PREFIX_PATH=$unpacked"
}

# run CODE PROGRAM ARGUMENT...: the program must end with that exit code. Its output goes to $printed.
run() {
    local code=0
    printed=$("$emulator" "$work/examples/${@:2}" | tr -d '\r') || code=$?
    [[ $code -eq $1 ]] || fail "$2 ended with $code instead of $1: $printed"
}

# holds FILE CONTENT
holds() {
    [[ $(cat "$1") == "$2" ]] || fail "$1 holds: $(cat "$1")"
}

write() {
    mkdir -p "$(dirname "$1")"
    printf '%s' "$2" >"$1"
}

list_and_copy() {
    build_example list-and-copy
    write "$disk/component/a.txt" first
    write "$disk/component/sub/b.bin" second
    write "$disk/component/sub/deep/größe.txt" third
    run 0 list-and-copy/list-and-copy.exe "$windows\\component" "$windows\\copy"
    diff -r "$disk/component" "$disk/copy" || fail "the copy differs"
    [[ $printed == *'copied sub\deep\größe.txt'*'3 files, 0 failed' ]] || fail "list-and-copy printed: $printed"
    run 0 list-and-copy/list-and-copy.exe "$windows\\component" "$windows\\texts" '*.txt'
    [[ -e $disk/texts/a.txt && ! -e $disk/texts/sub/b.bin ]] || fail "the pattern selected: $printed"
    run 1 list-and-copy/list-and-copy.exe "$windows\\missing" "$windows\\copy"
}

# Opens a file exclusively until unlock.
lock() {
    local generic_read=2147483648
    "$emulator" "$locker" "$1" $generic_read 0 "$name" >"$work/locker" &
    locked=$!
    until grep -q ready "$work/locker"; do
        kill -0 "$locked" 2>/dev/null || fail "$1 could not be locked"
        sleep 0.1
    done
}

unlock() {
    [[ -n $locked ]] || return 0
    kill "$locked" 2>/dev/null || true
    wait "$locked" || true
    locked=
}

restore() {
    build_example restore
    write "$disk/backup/one.txt" 'one, restored'
    write "$disk/backup/busy.txt" 'busy, restored'
    write "$disk/backup/db/two.txt" 'two, restored'
    write "$disk/live/one.txt" 'one, damaged'
    write "$disk/live/busy.txt" 'busy, in use'
    write "$disk/live/db/two.txt" 'two, stays'
    lock "$windows\\live\\busy.txt"
    run 4 restore/restore-files.exe "$windows\\backup" "$windows\\live" "$windows\\live\\db\\=$windows\\alternate"
    unlock
    holds "$disk/live/one.txt" 'one, restored'
    holds "$disk/alternate/two.txt" 'two, restored'
    holds "$disk/live/db/two.txt" 'two, stays'
    holds "$disk/live/busy.txt" 'busy, in use'
    holds "$(echo "$disk"/live/rst*.tmp)" 'busy, restored'
    "$emulator" reg query 'HKLM\System\CurrentControlSet\Control\Session Manager' /v PendingFileRenameOperations |
        grep -qiF "$name\\live\\busy.txt" || fail "no replacement is registered for the next reboot"
    run 0 restore/restore-files.exe "$windows\\backup" "$windows\\live"
    holds "$disk/live/busy.txt" 'busy, restored'
}

# A directory stands for the device of the snapshot, which Wine does not have.
snapshot() {
    build_example snapshot
    write "$disk/data/f.txt" 'the live file'
    write "$disk/device/$name/data/f.txt" 'the file in the snapshot'
    run 0 snapshot/read-snapshot.exe 'C:\' "$windows\\device" "$windows\\from-snapshot" "$windows\\data\\f.txt"
    holds "$disk/from-snapshot/f.txt" 'the file in the snapshot'
    run 1 snapshot/read-snapshot.exe 'C:\' "$windows\\device" "$windows\\from-snapshot" 'D:\data\f.txt'
    [[ $printed == *'its volume has no snapshot' ]] || fail "read-snapshot printed: $printed"
}

list_and_copy
restore
snapshot
