#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause

# Runs a Windows program under Debian's wine64, in a separate wine prefix.
#
#   scripts/run-under-wine.sh PROGRAM.exe [ARGUMENT...]
#   scripts/run-under-wine.sh --prefix          prints the prefix's directory
#   scripts/run-under-wine.sh --start           starts wine's services; they end soon after the
#                                               last program. Otherwise the first program starts
#                                               them, and they hold its output open until then.
#
# STALWICK_WINE_PREFIX   the prefix; default: stalwick/wine in the user's cache, made at first use
# The other variables that wine itself knows are passed on.
set -eu

WINEPREFIX=${STALWICK_WINE_PREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/stalwick/wine}
# Neither .NET nor a browser engine is needed, and requesting them would open a window.
WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
WINEDEBUG=${WINEDEBUG:--all}
# File names are UTF-8 on the disk, in every locale.
LC_ALL=C.UTF-8
export WINEPREFIX WINEDLLOVERRIDES WINEDEBUG LC_ALL

if [ ! -e "$WINEPREFIX/.made" ]; then
    mkdir -p "$WINEPREFIX"
    # Only the first of several callers creates the prefix; the others wait for it.
    (
        flock 9
        [ -e "$WINEPREFIX/.made" ] || { wineboot --init >"$WINEPREFIX/.log" 2>&1 && touch "$WINEPREFIX/.made"; }
    ) 9>"$WINEPREFIX/.lock"
fi

if [ "${1-}" = --prefix ]; then
    echo "$WINEPREFIX"
    exit 0
fi

if [ "${1-}" = --start ]; then exec wine wineboot.exe </dev/null >/dev/null 2>&1; fi

exec wine "$@"
