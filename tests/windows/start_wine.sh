#!/bin/sh
# Makes a fresh prefix in WINE_HOME, a screen of its own, and one process that keeps both warm: Wine's daemons
# inherit the pipes of whoever starts them, so that each test would wait for them to end. Does nothing where all of
# that stands already.
set -eu
here=$(dirname "$(readlink -f "$0")")
. "$here/wine_env.sh"
mkdir -p "$WINE_HOME"
exec 9>"$WINE_HOME/lock"
flock 9

alive() {
    [ -f "$WINE_HOME/$1.pid" ] && kill -0 "$(cat "$WINE_HOME/$1.pid")" 2>/dev/null
}
if [ -f "$WINE_HOME/ready" ] && alive screen && alive warm; then
    exit 0
fi
rm -f "$WINE_HOME/ready"

# The screen comes first: a session begun without one never gets one. The server picks a free number itself.
if ! alive screen; then
    rm -f "$WINE_HOME/display"
    setsid sh -c 'exec Xvfb -displayfd 3 -screen 0 2560x1600x24 -nolisten tcp 3>"$1" 9>&-' - "$WINE_HOME/display" \
        >/dev/null 2>&1 </dev/null &
    echo $! >"$WINE_HOME/screen.pid"
    tries=0
    while [ ! -s "$WINE_HOME/display" ]; do
        tries=$((tries + 1))
        [ "$tries" -le 100 ] || { echo "start_wine: no screen" >&2; exit 1; }
        sleep 0.1
    done
fi

. "$here/wine_env.sh"
if [ ! -f "$WINEPREFIX/system.reg" ]; then
    if [ "${WINEARCH:-}" = win32 ]; then
        # The 32-bit user32.dll needs this one, which only a later step of making the prefix would bring.
        mkdir -p "$WINEPREFIX/drive_c/windows/system32"
        cp /usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll "$WINEPREFIX/drive_c/windows/system32"
    fi
    wineboot -i >/dev/null 2>&1 9>&-
    # No window manager is there to wait for.
    wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 9>&-
    # Fonts of the three languages.
    link='HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink'
    replaced='HKCU\Software\Wine\Fonts\Replacements'
    wine reg add "$link" /v Tahoma /t REG_MULTI_SZ /d 'VL-Gothic-Regular.ttf,VL Gothic\0wqy-microhei.ttc,WenQuanYi Micro Hei' /f >/dev/null 2>&1 9>&-
    wine reg add "$replaced" /v 'MS Shell Dlg' /d Tahoma /f >/dev/null 2>&1 9>&-
    wine reg add "$replaced" /v 'MS UI Gothic' /d 'VL Gothic' /f >/dev/null 2>&1 9>&-
    # A crash ends the program at once; the debugger would keep it waiting.
    wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d 'cmd /c exit' /f >/dev/null 2>&1 9>&-
    wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Auto /d 1 /f >/dev/null 2>&1 9>&-
    wineserver -w 9>&-
fi
# A program that waits for input that never comes.
rm -f "$WINE_HOME/input"
mkfifo "$WINE_HOME/input"
setsid sleep 1000000 >"$WINE_HOME/input" 2>/dev/null </dev/null 9>&- &
echo $! >"$WINE_HOME/input.pid"
setsid wine cmd <"$WINE_HOME/input" >/dev/null 2>&1 9>&- &
echo $! >"$WINE_HOME/warm.pid"
# The first program with a window brings the desktop, another daemon that stays.
echo 'CreateObject "Scripting.FileSystemObject"' >"$WINE_HOME/first.vbs"
wine cscript //nologo "$(echo "Z:$WINE_HOME/first.vbs" | tr / '\\')" >/dev/null 2>&1 9>&-
: >"$WINE_HOME/ready"
