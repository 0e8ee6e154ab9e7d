# Sourced: the world in which the Windows programs of the tests run. Needs WINE_HOME, a folder for everything that
# must outlive one program: the prefix, the screen's number, the process that keeps the prefix warm.

export WINEPREFIX="$WINE_HOME/prefix"
export WINEDEBUG="${WINEDEBUG:--all}"
# Without the last one folders would be made in the user's home.
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
# File names in any language need a UTF-8 locale; it does not change the system code page, which stays 1252.
export LANG=C.UTF-8
unset LC_ALL LC_CTYPE
if [ -f "$WINE_HOME/display" ]; then
    DISPLAY=":$(cat "$WINE_HOME/display")"
    export DISPLAY
fi
