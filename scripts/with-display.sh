#!/bin/sh
# Runs a command on a display of its own, with a window manager.
#   scripts/with-display.sh COMMAND [ARGUMENT...]
# Needs: xvfb, xauth, openbox.
set -eu
# shellcheck disable=SC2016  # expanded by the inner shell
exec xvfb-run --auto-servernum --server-args='-screen 0 1280x900x24' sh -c '
    openbox >/dev/null 2>&1 &
    manager=$!
    "$@"
    status=$?
    kill "$manager" 2>/dev/null
    exit "$status"' sh "$@"
