#!/usr/bin/env bash
# Plays hosts against the built component: registered, by manifest and unregistered again, with real keys from
# outside. Takes the build folder; WINE_HOME tells the world to run in.
set -euo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
build=$(readlink -f "$1")
examples=$(readlink -f "$here/../../examples/windows")
. "$here/wine_env.sh"
work=$(mktemp -d "${TMPDIR:-/tmp}/partkeephosts-XXXXXX") # its path must hold no dot
trap 'rm -rf "$work"' EXIT

component="$build/src/host/component/ORVICPartkeepRead.DLL"
stand_in="$build/tests/windows/PartkeepStandIn.dll"
windows_path() { echo "Z:${1//\//\\}"; } # a script host takes a path that begins with a slash for a switch
script=$(windows_path "$examples/partkeep.vbs")
run() { timeout -k 2 60 wine "$@" </dev/null 2>/dev/null | tr -d '\r'; }
fail() {
    echo "hosts: $*" >&2
    exit 1
}
# What a host prints while a user presses Enter in its dialog.
picked() {
    : >"$work/out"
    mkdir -p "$work/parts"
    run "$@" >"$work/out" &
    host=$!
    window=""
    for _ in $(seq 200); do
        window=$(xdotool search --onlyvisible --name '^Partkeep Read$' 2>/dev/null | tail -1) && [ -n "$window" ] && break
        kill -0 $host 2>/dev/null || break
        sleep 0.1
    done
    [ -n "$window" ] || fail "$1 opened no dialog: $(cat "$work/out")"
    for _ in $(seq 50); do # a window that has just come may miss the first key
        xdotool key Return
        sleep 0.2
        kill -0 $host 2>/dev/null || break
    done
    wait $host || fail "$1 failed: $(cat "$work/out")"
    cat "$work/out"
}
expect() { # label, wanted, got
    [ "$2" = "$3" ] || fail "$1: wanted"$'\n'"$2"$'\n'"got"$'\n'"$3"
}
tab=$'\t'
folder="$(windows_path "$work/parts")"
three="3 parts"
for part in ALPHA BETA GAMMA; do
    three+=$'\n'"$part${tab}1${tab}SPCC${tab}1.5${tab}$folder\\SERVER1FOLDER1\\$part.iga"
done
one="ALPHA${tab}1${tab}SPCC${tab}15000${tab}$folder\\ALPHA.iga"

mkdir "$work/install"
printf 'SERVER1\r\nFOLDER1\r\nmetric\r\nSERVER1\r\n-9999\r\n0\r\n' >"$work/install/kpdservers.ini"
run reg add 'HKLM\software\Velmar\ORVIC' /v installpath /d "$(windows_path "$work/install")" /f >/dev/null
run regsvr32 /s "$stand_in" || fail "the stand-ins do not register"

run regsvr32 /s "$component" || fail "the component does not register"
expect "picked by a script" "$three" "$(picked cscript //nologo "$script" pick "$folder" 1)"
expect "picked by C++" "$three" "$(picked "$build/examples/windows/pick_parts.exe" "$folder")"
expect "read by a script" "$one" \
    "$(run cscript //nologo "$script" read "$folder" SERVER1 FOLDER1 ALPHA)"
[ -f "$work/install/ZanPartkeepConfig.xml" ] || fail "the options were not written"
run regsvr32 /s /u "$component" || fail "the component does not unregister"
expect "without registration" "the component is not to be found" \
    "$(run "$build/examples/windows/pick_parts.exe" "$folder" || true)"

mkdir "$work/beside"
cp "$component" "$build/examples/windows/pick_parts.exe" "$examples"/*.manifest "$work/beside"
expect "picked by manifest" "$three" "$(picked "$work/beside/pick_parts.exe" "$folder")"

run regsvr32 /s /u "$stand_in"
run reg delete 'HKLM\software\Velmar\ORVIC' /f >/dev/null
echo "hosts: all as expected"
