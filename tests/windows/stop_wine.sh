#!/bin/sh
# Ends what start_wine.sh has started, and only that. The prefix stays unless "--remove" is given.
here=$(dirname "$(readlink -f "$0")")
. "$here/wine_env.sh"
if [ -d "$WINEPREFIX" ]; then
    wineserver -k
    wineserver -w
fi
for name in warm input screen; do
    if [ -f "$WINE_HOME/$name.pid" ]; then
        kill "$(cat "$WINE_HOME/$name.pid")" 2>/dev/null
        rm -f "$WINE_HOME/$name.pid"
    fi
done
rm -f "$WINE_HOME/ready"
if [ "${1:-}" = "--remove" ]; then
    rm -rf "$WINE_HOME"
fi
