#!/usr/bin/env bash
# Plays hosts against the built component: registered, by manifest and unregistered again, with real keys from
# outside. Takes the build folder; WINE_HOME tells the world to run in.
set -euo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
build=$(readlink -f "$1")
examples=$(readlink -f "$here/../../examples/windows")
. "$here/wine_env.sh"
work=$(mktemp -d "${TMPDIR:-/tmp}/partkeephosts-XXXXXX") # its path must hold no dot
trap 'clean_up; rm -rf "$work"' EXIT

component="$build/src/host/component/ORVICPartkeepRead.DLL"
stand_in="$build/tests/windows/PartkeepStandIn.dll"
windows_path() { echo "Z:${1//\//\\}"; } # a script host takes a path that begins with a slash for a switch
script=$(windows_path "$examples/partkeep.vbs")
controls=('HKCR\CLSID\{4C1CDCBC-4146-4EFC-9693-AE6800752C57}' 'HKCR\CLSID\{DBE2F81A-E533-4E67-A6CD-A05F41A9627E}')
sibling='HKCU\Software\Classes\CLSID\{0A1B2C3D-0000-4000-8000-000000000001}'
named_sibling='HKCU\Software\Classes\Ferrin.FerrinDataSelectionDialog'
run() { timeout -k 2 60 wine "$@" </dev/null 2>/dev/null | tr -d '\r'; }
clean_up() {
    for key in 'HKLM\software\Velmar\ORVIC' "$sibling" "$named_sibling" "${controls[@]}"; do
        run reg delete "$key" /f >/dev/null || true
    done
}
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
for control in "${controls[@]}"; do
    run reg add "$control\\InprocServer32" /ve /d "$(windows_path "$stand_in")" /f >/dev/null
done

# What registration leaves: with a quote in the path, twice, and with something stale under the class.
id='{E4962F8D-71BB-4071-B375-4F2631DF3DDB}'
name=ORVICPartkeepRead.PartkeepReadImpl
library='TypeLib\{74326502-FEC5-428A-B215-C365ABB0259E}'
keys() { # a line each, with the values behind it
    for key in "CLSID\\$id" $name $name.1 "$library" 'Interface\{F5777EAD-E617-4689-A20B-C008B5944572}'; do
        run reg query "HKCR\\$key" /s || true
    done | sed -n 's/^HKEY_CLASSES_ROOT\\//p; s/^ *\((Default)\|[A-Z].*\)    REG_SZ    /  \1=/p' | sed -z 's/\n  / /g'
}
mkdir "$work/it's here"
quoted="$work/it's here/ORVICPartkeepRead.DLL"
cp "$component" "$quoted"
run regsvr32 /s /u "$quoted" || fail "unregistering fails where nothing is registered"
expect "keys before" "" "$(keys)"
run regsvr32 /s "$quoted" || fail "the component does not register"
expect "keys of the class" "CLSID\\$id (Default)=PartkeepReadImpl Class
CLSID\\$id\\InprocServer32 (Default)=$(windows_path "$quoted") ThreadingModel=both
CLSID\\$id\\ProgID (Default)=$name.1
CLSID\\$id\\VersionIndependentProgID (Default)=$name
$name (Default)=PartkeepReadImpl Class
$name\\CLSID (Default)=$id
$name.1 (Default)=PartkeepReadImpl Class
$name.1\\CLSID (Default)=$id
$library\\1.0 (Default)=ORVICPartkeepRead 1.0 Type Library" "$(keys | head -9)"
expect "the help folder" "$(windows_path "$work/it's here/")" "$(keys | sed -n 's/.*HELPDIR (Default)=//p')"
keys >"$work/once"
run reg add "HKCR\\CLSID\\$id\\Stale" /ve /d x /f >/dev/null
run regsvr32 /s "$quoted" || fail "the component does not register twice"
expect "keys after registering twice" "$(cat "$work/once")" "$(keys)"
run regsvr32 /s /u "$quoted" || fail "the component does not unregister"
expect "keys behind" "" "$(keys)"
run reg query 'HKCR\CLSID' | grep CLSID >/dev/null || fail "the list of classes went too"

run regsvr32 /s "$component" || fail "the component does not register"
expect "picked by a script" "$three" "$(picked cscript //nologo "$script" pick "$folder" 1)"
expect "picked by C++" "$three" "$(picked "$build/examples/windows/pick_parts.exe" "$folder")"
expect "read by a script" "$one" \
    "$(run cscript //nologo "$script" read "$folder" SERVER1 FOLDER1 ALPHA)"
[ -f "$work/install/ZanPartkeepConfig.xml" ] || fail "the options were not written"
run regsvr32 /s /u "$component" || fail "the component does not unregister"
expect "without registration" "the component is not to be found" \
    "$(run "$build/examples/windows/pick_parts.exe" "$folder" || true)"

# The installation, found by its sibling.
run reg delete 'HKLM\software\Velmar\ORVIC' /f >/dev/null
run reg add "$sibling\\InprocServer32" /v CodeBase /d "$(windows_path "$work/install/Sibling.dll")" /f >/dev/null
run reg add "$named_sibling\\CLSID" /ve /d "${sibling##*\\}" /f >/dev/null
mkdir "$work/beside"
cp "$component" "$build/examples/windows/pick_parts.exe" "$examples"/*.manifest "$work/beside"
expect "picked by manifest" "$three" "$(picked "$work/beside/pick_parts.exe" "$folder")"

echo "hosts: all as expected"
