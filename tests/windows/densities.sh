#!/bin/sh
# The dialogs' layout on denser screens: the given build's windows_dialogs_test, as far as it measures places, at each
# density. The prefix is left at 96 dpi. With PARTKEEP_PICTURES pictures are left in a folder for each.
set -eu
here=$(dirname "$(readlink -f "$0")")
test_program=$1/tests/windows/windows_dialogs_test.exe
pictures=${PARTKEEP_PICTURES:-}

set_density() {
    for key in 'HKCU\Control Panel\Desktop' 'HKCC\Software\Fonts'; do
        "$here/under_wine.sh" reg add "$key" /v LogPixels /t REG_DWORD /d "$1" /f >/dev/null
    done
}
trap 'set_density 96' EXIT
for density in 120 144 192; do
    set_density "$density"
    if [ -n "$pictures" ]; then
        export PARTKEEP_PICTURES="$pictures/$density"
        mkdir -p "$PARTKEEP_PICTURES"
    fi
    echo "at $density dpi"
    "$here/under_wine.sh" "$test_program" --gtest_brief=1 \
        --gtest_filter='*.DoWhatEvery*:*.StartUpLaysOut*:*.Captions*:*.AddLists*'
done
