#!/bin/sh
# Runs one Windows program: WINE_HOME tells where start_wine.sh has made its world. Paths among the arguments stay
# as they are; Wine takes both kinds.
here=$(dirname "$(readlink -f "$0")")
. "$here/wine_env.sh"
if [ ! -f "$WINE_HOME/ready" ]; then
    "$here/start_wine.sh" >&2 || exit 1
    . "$here/wine_env.sh"
fi
exec wine "$@"
