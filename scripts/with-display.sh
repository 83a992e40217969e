#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause

# Runs a command on a separate display, with a window manager.
#   scripts/with-display.sh COMMAND [ARGUMENT...]
# Needs: xvfb, xauth, openbox.
set -eu
# A window that opens while the window manager starts may never be shown, so the command waits for
# it. The window manager gets no key bindings, so that all keys reach the program.
# shellcheck disable=SC2016  # expanded by the inner shell
exec xvfb-run --auto-servernum --server-args='-screen 0 1280x900x24' sh -c '
    managed=$(mktemp -d)
    sed "/<keyboard>/,/<\/keyboard>/d" /etc/xdg/openbox/rc.xml >"$managed/rc.xml"
    openbox --sm-disable --config-file "$managed/rc.xml" --startup "touch $managed/yes" \
        >/dev/null 2>&1 &
    manager=$!
    while [ ! -e "$managed/yes" ] && kill -0 "$manager" 2>/dev/null; do sleep 0.1; done
    rm -rf "$managed"
    "$@"
    status=$?
    kill "$manager" 2>/dev/null
    exit "$status"' sh "$@"
