#!/usr/bin/env bash
# Plays an administrator: installs an older release by the installer of the given width, upgrades, repairs and removes it,
# with hosts in between. What it leaves in the registry is compared with what registering the component leaves. Takes the
# build folder and its width; WINE_HOME tells the world to run in. Installers are those of packaging/msi.
set -euo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
build=$(readlink -f "$1")
bits=$2
top=$(readlink -f "$here/../..")
. "$here/wine_env.sh"
work=$(mktemp -d "${TMPDIR:-/tmp}/partkeepinstaller-XXXXXX")
trap 'rm -rf "$work"' EXIT

component="$build/src/host/component/ORVICPartkeepRead.DLL"
class='{E4962F8D-71BB-4071-B375-4F2631DF3DDB}'
name=ORVICPartkeepRead.PartkeepReadImpl
windows_path() { echo "Z:${1//\//\\}"; }
run() { timeout -k 2 120 wine "$@" </dev/null 2>/dev/null | tr -d '\r'; }
install() { run msiexec "$@" /qn || fail "msiexec $1 ${2##*\\}: $?"; }
fail() {
    echo "installer: $*" >&2
    exit 1
}
expect() { # label, wanted, got
    [ "$2" = "$3" ] || fail "$1: $(diff <(echo "$2") <(echo "$3") || true)"
}
# The component's keys in its own view, and its interface in the other, each with its values, the folder of the library
# aside. Wine registers a type library with flags of its own.
keys() {
    local interface='Interface\{F5777EAD-E617-4689-A20B-C008B5944572}'
    for key in "CLSID\\$class" $name $name.1 'TypeLib\{74326502-FEC5-428A-B215-C365ABB0259E}' "$interface" \
        "Wow6432Node\\$interface"; do
        run reg query "HKCR\\$key" /s || true
    done | sed -n "s/^HKEY_CLASSES_ROOT\\\\//p; s/^ *\\((Default)\\|[A-Z].*\\)    REG_SZ    /  \\1=/p" | sed -z 's/\n  / /g' |
        sed -e '/FLAGS/s/=.*/=flags/' -e 's/=[A-Z]:.*\\ORVICPartkeepRead.DLL/=library/' -e '/HELPDIR/s/=[A-Z]:.*\\$/=folder/' | sort
}
whole_registry() { # but for what Wine remembers of any installer
    local file="$work/registry"
    run regedit /E "$(windows_path "$file")" 'HKEY_LOCAL_MACHINE\Software' >/dev/null
    iconv -f UTF-16 -t UTF-8 "$file" | tr -d '\r' | grep -v '^\[.*\\Installer\(\\[A-Za-z]*\|\\UserData\\S-[-0-9]*\(\\[A-Za-z]*\)\?\)\?\]$' |
        grep . | sort
}
hosts_work() {
    printf 'Set h = CreateObject("%s")\nh.NumberOfPartsSelected n\nWScript.Echo n & " parts"\n' $name >"$work/host.vbs"
    printf 'var h = new ActiveXObject("%s"); h.SetLanguageID(1); WScript.Echo("made");\n' $name >"$work/host.js"
    expect "VBScript, $1" "0 parts" "$(run cscript //nologo "$(windows_path "$work/host.vbs")")"
    expect "JScript, $1" made "$(run cscript //nologo "$(windows_path "$work/host.js")")"
    expect "C++, $1" "0 parts" "$(run "$build/examples/windows/pick_parts.exe" "$(windows_path "$work")")"
}

release=$("$top/packaging/version")
older="$(windows_path "$top/build/msi/PartkeepRead-0.9.0-$bits.msi")"
newer="$(windows_path "$top/build/msi/PartkeepRead-$release-$bits.msi")"
run regsvr32 /s "$component" || fail "the component does not register"
keys >"$work/wanted"
grep -q InprocServer32 "$work/wanted" || fail "registering leaves nothing: $(cat "$work/wanted")"
run regsvr32 /s /u "$component" || fail "the component does not unregister"
whole_registry >"$work/before"
[ "$(wc -l <"$work/before")" -gt 1000 ] || fail "the registry was not read"

printf 'WScript.Echo CreateObject("Scripting.FileSystemObject").GetFileVersion("%s")\n' "$(windows_path "$component")" \
    >"$work/version.vbs"
expect "the library's number" "$(run cscript //nologo "$(windows_path "$work/version.vbs")")" \
    "$(msiinfo export "$top/build/msi/PartkeepRead-$release-$bits.msi" File | awk -F'\t' '/^ComponentFile/ { print $5 }')"

install /i "$older"
expect "keys behind the older release" "$(cat "$work/wanted")" "$(keys)"
hosts_work "installed"
install /i "$newer"
cp "$top/build/msi/PartkeepRead-$release-$bits.msi" "$work/again.msi" # as another build of the release has it
msibuild "$work/again.msi" -q "UPDATE Property SET Value='{11111111-2222-4333-8444-555555555555}' WHERE Property='ProductCode'"
newer="$(windows_path "$work/again.msi")"
install /i "$newer"
expect "keys behind the upgrade" "$(cat "$work/wanted")" "$(keys)"
expect "releases installed" 1 "$(run reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall' /s |
    grep -c 'DisplayName.*Partkeep Read')"
hosts_work "upgraded"
run msiexec /i "$older" /qn && fail "an older release goes over a later one"
expect "keys behind what was refused" "$(cat "$work/wanted")" "$(keys)"
folder=$(find "$WINEPREFIX/drive_c" -type d -name 'Partkeep Read')
run reg delete "HKCR\\CLSID\\$class" /f >/dev/null
run reg delete "HKCR\\$name" /f >/dev/null
rm "$folder/ORVICPartkeepRead.DLL"
install /i "$newer" REINSTALL=ALL REINSTALLMODE=amus
expect "keys behind the repair" "$(cat "$work/wanted")" "$(keys)"
hosts_work "repaired"
install /x "$newer"
expect "keys behind the removal" "" "$(keys)"
[ ! -e "$folder" ] || fail "the folder stays: $(ls "$folder")"
whole_registry >"$work/after"
expect "the registry behind the removal" "$(cat "$work/before")" "$(cat "$work/after")"

# Both widths at once: what they share outlasts the first to go. Wine keeps apart for each width what Windows has once, so
# that the second leaves here what it would take along there.
if [ "$bits" = 64 ]; then
    newer="$(windows_path "$top/build/msi/PartkeepRead-$release-64.msi")"
    narrow="$(windows_path "$top/build/msi/PartkeepRead-$release-32.msi")"
    for gone in "$newer" "$narrow"; do
        install /i "$newer"
        install /i "$narrow"
        install /x "$gone"
        if [ "$gone" = "$narrow" ]; then
            expect "keys of the width that stays" "$(cat "$work/wanted")" "$(keys)"
            install /x "$newer"
        else
            expect "the shared program id and interface" "$name.1 Wow6432Node\\Interface" \
                "$(keys | grep -o "^$name.1 \|^Wow6432Node.Interface" | tr -d ' ' | uniq | paste -sd' ')"
            install /x "$narrow"
        fi
        for key in $name $name.1; do run reg delete "HKCR\\$key" /f >/dev/null || true; done
        expect "keys behind both" "" "$(keys)"
    done
fi
echo "installer: installed, upgraded, repaired and removed, $bits bit"
