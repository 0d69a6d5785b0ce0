#!/usr/bin/env bash
# The demonstration: demo.sh AGENT DIR. Backs DIR up from a "snapshot" while the live files change, damages the live copy, restores one part in
# place and the rest through two mappings while a second process holds two of the files, restarts, and compares every byte
# with DIR.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
agent=$1
source=$2
prefix=${KESTROVANE_PREFIX:-$root/build/wine}
live=$prefix/drive_c/Demo/Live      # C:\Demo\Live
snapshot=$prefix/drive_c/Demo/Snapshot # stands for the snapshot device of C:
backup=$prefix/drive_d/Demo/Backup  # D:\Demo\Backup
other=$prefix/drive_d/Demo/Restored # D:\Demo\Restored
work=$root/build/demo

agent() {
    "$root/tools/wine.sh" "$agent" "$@"
}

# Opens a live file in a second process, which keeps it until the restart.
hold() {
    local windows="C:\\Demo\\Live\\${1//\//\\}" ready
    exec {holder}< <("$root/tools/wine.sh" "${agent%/*}/kestrovane-file-locker.exe" "$windows" 2147483648 1 "demo-$1")
    read -r -t 60 -u "$holder" ready && [[ $ready == ready* ]] || { echo "demo: $windows could not be held" >&2; exit 1; }
}

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

# Counts the files of the backup that hold what they held when the snapshot was taken.
compare_backup() {
    local file
    from_snapshot=0
    while IFS= read -r file; do
        cmp -s "$source/$file" "$backup/$file" && from_snapshot=$((from_snapshot + 1))
    done <"$work/files"
    [[ $from_snapshot -eq $(wc -l <"$work/files") ]] || { echo "demo: the backup holds changed files" >&2; exit 1; }
    rm -rf "$live" && cp -a "$snapshot/Demo/Live" "$live"
}

# Chooses what the mappings cover, near to half of the files: a top directory with everything below it, and one extension.
choose_mappings() {
    awk -F/ 'NF > 1 { count[$1]++ } END { for (name in count) print count[name], name }' "$work/files" | sort -rn >"$work/directories"
    directory=$(awk -v total="$(wc -l <"$work/files")" '$1 <= total / 3 { sub(/^[0-9]+ /, ""); print; exit }' "$work/directories")
    directory=${directory:-no such directory}
    extension=$(awk -F/ -v skipped="$directory" '$1 != skipped && match(tolower($NF), /\.[a-z0-9]+$/) {
            count[substr(tolower($NF), RSTART)]++ }
        END { for (name in count) print count[name], name }' "$work/files" | sort -rn | awk 'NR == 1 { print $2 }')
    extension=${extension:-.none}
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
    if [[ $1 == "$directory"/* ]]; then
        printf '%s' "$other/tree/${1#*/}"
    elif [[ $lower == *"$extension" ]]; then
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
        "files backed up" "$(wc -l <"$work/files")" \
        "with content of the snapshot" "$from_snapshot" \
        "left out (no Windows name)" "$(($(wc -l <"$work/all") - $(wc -l <"$work/files")))" \
        "restored in place, identical" "$in_place" \
        "restored elsewhere, identical" "$mapped" \
        "of these replaced at the restart" "${#held[@]}" \
        "different" "$different" \
        "bytes compared" "$bytes" \
        "seconds" "$SECONDS"
}

rm -rf "$work"
mkdir -p "$work"
list_source
copy_to_live
choose_mappings

say "Taking a snapshot of C:, then changing and deleting every live file"
take_snapshot
change_after_snapshot

say "Backing up C:\\Demo\\Live (a copy of ${source##*/}) to D:\\Demo\\Backup"
agent backup 'C:\Demo\Live' 'D:\Demo\Backup' --snapshot 'C:=C:\Demo\Snapshot'
compare_backup
echo "All $from_snapshot files of the backup hold their content at the time of the snapshot."

say "Deleting, cutting and overwriting the live files"
damage_live

mapfile -t held < <(choose_held)
for file in "${held[@]}"; do
    say "A second process opens C:\\Demo\\Live\\${file//\//\\}"
    [[ -e $live/$file ]] || echo damaged >"$live/$file"
    hold "$file"
done

say "Restoring: '$directory' and all below it to D:\\Demo\\Restored\\tree, *$extension to D:\\Demo\\Restored\\by-name, the rest in place"
code=0
agent restore 'D:\Demo\Backup' --protect-live \
    --map "C:\\Demo\\Live\\${directory//\//\\}=D:\\Demo\\Restored\\tree;*;recursive" \
    --map "C:\\Demo\\Live=D:\\Demo\\Restored\\by-name;*$extension;recursive" || code=$?
[[ $code -eq $((${#held[@]} > 0 ? 4 : 0)) ]] || { echo "demo: the restore ended with $code" >&2; exit 1; }

say "Registered for the next restart"
agent pending

say "Restarting"
restart
agent pending

say "Comparing every byte"
compare
summary
[[ $different -eq 0 ]] || exit 1
