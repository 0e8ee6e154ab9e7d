# Sourced: the world in which the Windows programs of the tests run. WINE_HOME is the folder for everything that must
# outlive one program: the prefix, the screen's number, the process that keeps the prefix warm.

: "${WINE_HOME:=${TMPDIR:-/tmp}/partkeep-wine-$(id -u)}"
export WINE_HOME
export WINEPREFIX="$WINE_HOME/prefix"
export WINEDEBUG="${WINEDEBUG:--all}"
# Without the last one folders would be made in the user's home.
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
# File names in any language need a UTF-8 locale; it does not change the system code page, which stays 1252.
export LANG=C.UTF-8
unset LC_ALL LC_CTYPE
# A Japanese locale brings the code page 932; it is made for the tests where the machine has none.
if [ -n "${PARTKEEP_LOCALE:-}" ]; then
    export LOCPATH="$WINE_HOME/locale" LC_ALL="$PARTKEEP_LOCALE"
fi
if [ -f "$WINE_HOME/display" ]; then
    DISPLAY=":$(cat "$WINE_HOME/display")"
    export DISPLAY
fi
