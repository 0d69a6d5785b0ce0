#!/usr/bin/env bash
# The demonstration: demo.sh AGENT DIR. Backs DIR up from a "snapshot" while the live files change, adds a second version,
# verifies both, restores into another directory, damages the live copy, kills a restore and lets the next one repair it,
# restores one part in place and the rest through two mappings while a second process has two of the files open, reboots, and
# compares every byte with DIR.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
agent=$1
source=$2
prefix=${KESTROVANE_PREFIX:-$root/build/wine}
live=$prefix/drive_c/Demo/Live      # C:\Demo\Live
snapshot=$prefix/drive_c/Demo/Snapshot # stands for the snapshot device of C:
backup=$prefix/drive_d/Demo/Backup  # D:\Demo\Backup
other=$prefix/drive_d/Demo/Restored # D:\Demo\Restored
aside=$prefix/drive_d/Demo/Aside    # D:\Demo\Aside
work=$root/build/demo

agent() {
    "$root/tools/wine.sh" "$agent" "$@"
}

# expect CODE COMMAND...: runs a command that must end with this exit code.
expect() {
    local expected=$1 code=0
    shift
    "$@" || code=$?
    [[ $code -eq $expected ]] || fail "'$*' ended with $code instead of $expected"
}

fail() {
    echo "demo: $*" >&2
    exit 1
}

# Opens a live file in a second process, which keeps it until the reboot.
hold() {
    local windows="C:\\Demo\\Live\\${1//\//\\}" ready
    exec {holder}< <("$root/tools/wine.sh" "${agent%/*}/kestrovane-file-locker.exe" "$windows" 2147483648 1 "demo-$1")
    read -r -t 60 -u "$holder" ready && [[ $ready == ready* ]] || fail "$windows could not be opened"
}

# The reboot of the prefix.
restart() {
    "$root/tools/wine.sh" stop
    "$root/tools/wine.sh" start
}

say() {
    printf '\n== %s\n' "$*"
}

# Lists the regular files of the source that a Windows volume can hold, one a line. Left out: other names, paths of more
# than 200 characters, all but the first of names that differ only in case, links, and this project's build folder.
list_source() {
    local skip=()
    [[ $source == "$root" ]] && skip=(-path ./build -prune -o)
    (cd "$source" && find . "${skip[@]}" -type f -print | LC_ALL=C sort) | sed 's|^\./||' >"$work/all"
    LC_ALL=C.UTF-8 awk '
        /[:*?"<>|\\]/ || /[[:cntrl:]]/ || /[. ](\/|$)/ || length($0) > 200 { next }
        tolower($0) in seen { next }
        { seen[tolower($0)] = 1; print }' "$work/all" >"$work/files"
}

copy_to_live() {
    rm -rf "$prefix/drive_c/Demo" "$prefix/drive_d/Demo"
    mkdir -p "$live"
    tar -C "$source" --no-recursion --verbatim-files-from -T "$work/files" -cf - | tar -C "$live" -xf -
}

# A directory takes the place of the device that a real snapshot has. What changes afterwards must not be in the backup.
take_snapshot() {
    mkdir -p "$snapshot/Demo"
    cp -a "$live" "$snapshot/Demo/Live"
}

change_after_snapshot() {
    local number=0 file
    while IFS= read -r file; do
        chmod u+w "$live/$file"
        case $((number++ % 2)) in
        0) rm "$live/$file" ;;
        1) printf 'changed after the snapshot\n' >>"$live/$file" ;;
        esac
    done <"$work/files"
}

# identical DIR: counts the files of DIR that hold what those of the source do.
identical() {
    local file count=0
    while IFS= read -r file; do
        cmp -s "$source/$file" "$1/$file" && count=$((count + 1))
    done <"$work/files"
    echo "$count"
}

# The newest version of the backup.
newest() {
    find "$backup" -mindepth 1 -maxdepth 1 -type d | LC_ALL=C sort | tail -n 1
}

# The backup must hold what the files held when the snapshot was taken.
compare_backup() {
    from_snapshot=$(identical "$(newest)")
    [[ $from_snapshot -eq $total ]] || fail "the backup holds changed files"
    rm -rf "$live" && cp -a "$snapshot/Demo/Live" "$live"
}

# Ends a restore in place in the middle of its work. Every file must be the damaged or the restored one, whole.
kill_restore() {
    local before file pid
    before=$(identical "$live")
    rm -rf "$work/damaged" && cp -a "$live" "$work/damaged"
    "$root/tools/wine.sh" "$agent" restore 'D:\Demo\Backup' >"$work/killed.log" 2>&1 & # no function: its shell would be killed
    pid=$!
    for _ in {1..2000}; do
        sleep 0.01
        [[ $(wc -l <"$work/killed.log") -gt 0 ]] && break
    done
    sleep 0.3
    kill -KILL "$pid" 2>/dev/null || fail "the restore was over before it could be killed"
    wait "$pid" 2>/dev/null || true
    while IFS= read -r file; do
        cmp -s "$source/$file" "$live/$file" && continue
        [[ ! -e $live/$file && ! -e $work/damaged/$file ]] && continue
        cmp -s "$work/damaged/$file" "$live/$file" || fail "the killed restore left half of $file"
    done <"$work/files"
    restored_before_kill=$(($(identical "$live") - before))
}

# Chooses what the mappings cover, near to half of the files: a top directory with everything below it, and one extension.
choose_mappings() {
    awk -F/ 'NF > 1 { count[$1]++ } END { for (name in count) print count[name], name }' "$work/files" | sort -rn >"$work/directories"
    directory=$(awk -v total="$(wc -l <"$work/files")" '$1 <= total / 3 { sub(/^[0-9]+ /, ""); print; exit }' "$work/directories")
    extension=$(awk -F/ -v skipped="$directory" '$1 != skipped && match(tolower($NF), /\.[a-z0-9]+$/) {
            count[substr(tolower($NF), RSTART)]++ }
        END { for (name in count) print count[name], name }' "$work/files" | sort -rn | awk 'NR == 1 { print $2 }')
    mappings=()
    if [[ -n $directory ]]; then
        mappings+=(--map-from "C:\\Demo\\Live\\${directory//\//\\}" --map-to 'D:\Demo\Restored\tree' --map-recursive)
    fi
    if [[ -n $extension ]]; then
        mappings+=(--map-from 'C:\Demo\Live' --map-to 'D:\Demo\Restored\by-name' --map-spec "*$extension" --map-recursive)
    fi
}

# Deletes every third file of the live copy, cuts another third and overwrites the last.
damage_live() {
    local number=0 file
    while IFS= read -r file; do
        chmod u+w "$live/$file"
        case $((number++ % 3)) in
        0) rm "$live/$file" ;;
        1) : >"$live/$file" ;;
        2) printf 'damaged\n' >>"$live/$file" ;;
        esac
    done <"$work/files"
}

# Prints where a file must be after the restore.
place_of() {
    local lower=${1,,}
    if [[ -n $directory && $1 == "$directory"/* ]]; then
        printf '%s' "$other/tree/${1#*/}"
    elif [[ -n $extension && $lower == *"$extension" ]]; then
        printf '%s' "$other/by-name/$1"
    else
        printf '%s' "$live/$1"
    fi
}

# Two files that are restored in place.
choose_held() {
    local file
    while IFS= read -r file; do
        [[ $(place_of "$file") == "$live"/* ]] && printf '%s\n' "$file"
    done <"$work/files" | sed -n '1p;3p'
}

compare() {
    local file place
    in_place=0 mapped=0 different=0 bytes=0
    while IFS= read -r file; do
        place=$(place_of "$file")
        if ! cmp -s "$source/$file" "$place"; then
            echo "differs: $file" >&2
            different=$((different + 1))
        elif [[ $place == "$live"/* ]]; then
            in_place=$((in_place + 1))
        else
            mapped=$((mapped + 1))
        fi
        bytes=$((bytes + $(stat -c %s "$source/$file")))
    done <"$work/files"
}

summary() {
    say "Summary"
    printf '%-34s %12s\n' \
        "files backed up" "$total" \
        "with content of the snapshot" "$from_snapshot" \
        "in the second version, unchanged" "$unchanged" \
        "restored to another directory" "$aside_identical" \
        "restored before the kill" "$restored_before_kill" \
        "left out (no Windows name)" "$(($(wc -l <"$work/all") - total))" \
        "restored in place, identical" "$in_place" \
        "restored elsewhere, identical" "$mapped" \
        "of these replaced at the reboot" "${#held[@]}" \
        "different" "$different" \
        "bytes compared" "$bytes" \
        "seconds" "$SECONDS"
}

rm -rf "$work"
mkdir -p "$work"
list_source
total=$(wc -l <"$work/files")
copy_to_live
choose_mappings

say "Taking a snapshot of C:, then changing and deleting every live file"
take_snapshot
change_after_snapshot

say "Backing up C:\\Demo\\Live (a copy of ${source##*/}) to D:\\Demo\\Backup"
agent backup 'C:\Demo\Live' 'D:\Demo\Backup' --snapshot 'C:=C:\Demo\Snapshot'
compare_backup
echo "All $from_snapshot files of the backup hold their content at the time of the snapshot."
first=$(basename "$(newest)")

say "Backing up again: a second version, in which one file is new"
echo 'new in the second version' >"$live/new in the second version.txt"
agent --json backup 'C:\Demo\Live' 'D:\Demo\Backup' >"$work/second.json"
unchanged=$(sed -n 's/^ *"unchanged": \([0-9]*\),*$/\1/p' "$work/second.json")
agent versions 'D:\Demo\Backup'

say "Verifying both versions"
agent --quiet verify 'D:\Demo\Backup'
agent --quiet verify 'D:\Demo\Backup' --at "$first"
echo "Every copy is what its manifest says."

say "Restoring the second version to D:\\Demo\\Aside"
agent restore 'D:\Demo\Backup' --to 'D:\Demo\Aside'
aside_identical=$(identical "$aside")
[[ $aside_identical -eq $total && -e "$aside/new in the second version.txt" ]] || fail "D:\\Demo\\Aside differs"

say "Deleting, cutting and overwriting the live files, and killing a restore in the middle"
damage_live
kill_restore
echo "Killed after $restored_before_kill of $total files; every file is a whole one, the old or the new."

say "The next restore repairs it"
agent restore 'D:\Demo\Backup' --at "$first"
[[ $(identical "$live") -eq $total ]] || fail "the restore after the kill is not complete"
[[ -z $(find "$live" -name 'kv????????????.*') ]] || fail "the killed restore has left a file"

say "Damaging the live files once more"
damage_live
mapfile -t held < <(choose_held)
for file in "${held[@]}"; do
    say "A second process opens C:\\Demo\\Live\\${file//\//\\}"
    [[ -e $live/$file ]] || echo damaged >"$live/$file"
    hold "$file"
done

say "Restoring: '$directory' and all below it to D:\\Demo\\Restored\\tree, *$extension to D:\\Demo\\Restored\\by-name, the rest in place"
expect $((${#held[@]} > 0 ? 4 : 0)) agent restore 'D:\Demo\Backup' --at "$first" \
    --unmapped in-place "${mappings[@]}"

say "Registered for the next reboot"
agent pending

say "Rebooting"
restart
agent pending

say "Comparing every byte"
compare
summary
[[ $different -eq 0 ]] || exit 1
