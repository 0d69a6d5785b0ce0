#!/bin/sh
# Runs Windows programs of this project in a private Wine prefix below build/.
#
#   wine.sh start            makes the prefix, if need be, and starts its server
#   wine.sh stop             ends the server and all programs in the prefix
#   wine.sh PROGRAM [ARG...] runs a program: one of Wine's by its name, one of a build by its path
#
# The prefix has C:, a second volume D: and the shares \\alpha\data and \\beta\data. No link leads out of it: programs under
# test delete trees and follow links. A build's programs are therefore copied into it before they run.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
prefix=${KESTROVANE_PREFIX:-$root/build/wine}

export WINEPREFIX="$prefix" HOME="$prefix/home"
export WINEARCH=win64 WINEDEBUG=-all
export LC_ALL=C.UTF-8 # any other locale of the C family has no file names beyond ASCII
# Without the debugger, a crashed program always ends with a failure.
export WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe,winemenubuilder.exe=d"
unset XDG_CACHE_HOME XDG_CONFIG_HOME XDG_DATA_HOME DISPLAY

# Links to the machine's root and to the user's folders become folders of the prefix.
seal() {
    rm -f "$prefix"/dosdevices/[a-be-z]: "$prefix"/dosdevices/com* "$prefix"/dosdevices/lpt*
    find "$prefix/drive_c/users" -type l | while IFS= read -r link; do
        rm "$link"
        mkdir "$link"
    done
}

prepare() {
    mkdir -p "$HOME"
    wineboot -i </dev/null
    wineserver -w
    seal
    mkdir -p "$prefix/drive_d"
    ln -sfn ../drive_d "$prefix/dosdevices/d:"
    for server in alpha beta; do
        mkdir -p "$prefix/share_$server" "$prefix/dosdevices/unc/$server"
        ln -sfn "../../../share_$server" "$prefix/dosdevices/unc/$server/data"
    done
    : >"$prefix/.prepared"
}

# Reparse points that lead back to their own top, and names with separators: what programs under Wine cannot create.
plant_odd_entries() {
    links=$prefix/drive_c/kestrovane-links names=$prefix/drive_c/kestrovane-names
    mkdir -p "$links/loop/sub" "$links/linked" "$links/target" "$names/top/sub" "$names/top/..\\out"
    touch "$links/loop/file" "$links/target/file" "$names/victim.txt" "$names/top/..\\victim.txt" \
        "$names/top/plain.txt" "$names/top/sub/inner.txt"
    ln -sfn ../loop "$links/loop/first"
    ln -sfn ../loop "$links/loop/second"
    ln -sfn ../../loop "$links/loop/sub/up"
    ln -sfn ../target "$links/linked/other"
}

start() {
    if [ ! -e "$prefix/.prepared" ]; then
        rm -rf "$prefix"
        mkdir -p "$prefix"
        prepare >"$prefix.log" 2>&1 || { echo "wine.sh: no Wine prefix could be made; see $prefix.log" >&2; exit 1; }
    fi
    seal
    plant_odd_entries
    # A program that starts the server itself would leave it its output, and whoever reads that waits for ever.
    wineserver -p >/dev/null 2>&1 </dev/null || true
    wine wineboot >/dev/null 2>&1 </dev/null
    seal # the server has just linked the serial ports
}

# Prints the Windows path of a build's program after bringing its copy up to date.
deploy() {
    bin=$(CDPATH='' cd -- "$(dirname -- "$1")" && pwd)
    name=$(printf '%s' "${bin#"$root"/build/}" | tr -c 'A-Za-z0-9' '-')
    mkdir -p "$prefix/drive_c/programs/$name"
    flock "$prefix/.deploy" cp -u -- "$bin"/*.exe "$bin"/*.dll "$prefix/drive_c/programs/$name/"
    printf 'C:\\programs\\%s\\%s' "$name" "$(basename -- "$1")"
}

case "${1:-}" in
start) start ;;
stop) wineserver -k >/dev/null 2>&1 || true ;;
'') echo "usage: wine.sh start | stop | PROGRAM [ARGUMENT...]" >&2; exit 2 ;;
/*)
    program=$(deploy "$1")
    shift
    cd "$prefix/drive_c"
    exec wine "$program" "$@"
    ;;
*)
    cd "$prefix/drive_c"
    exec wine "$@"
    ;;
esac
