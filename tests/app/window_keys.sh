# SPDX-License-Identifier: BSD-3-Clause

# Windows and keys for scripts that use the program like a user; sourced by bash, on a display with
# a window manager (scripts/with-display.sh). `main` is the main dialog's caption, `window` the
# number that window_named returned for it, `program` the process.

main='Veltrosyn Stalwick'

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# Until the command succeeds; only a hanging program needs this much time.
wait_for() {
    for _ in $(seq 600); do
        ! "$@" > /dev/null 2>&1 || return 0
        sleep 0.1
    done
    fail "waited for: $*"
}

window_named() { xdotool search --onlyvisible --name "^$1\$" | head -1 | grep .; }
no_window_named() { ! window_named "$1"; }
active_window_is() { [ "$(xdotool getactivewindow getwindowname)" = "$1" ]; }

# Types keys into the window that looks active to the user. Keys that arrive while it takes the
# focus are lost.
press() {
    wait_for active_window_is "$1"
    sleep 0.5
    shift
    xdotool key --clearmodifiers "$@"
}

# The message box has the main dialog's caption; it is another window.
main_active() { [ "$(xdotool getactivewindow)" = "$window" ]; }
message_shown() { [ "$(xdotool getactivewindow)" != "$window" ] && active_window_is "$main"; }
# In the main dialog Enter does nothing.
press_enter_until_main() { xdotool key Return && sleep 0.2 && main_active; }

close_main() {
    xdotool key --clearmodifiers alt+F4
    wait_for no_window_named "$main"
    local status=0
    wait "$program" || status=$?
    program=
    [ $status -eq 0 ] || fail "the program ended with $status"
}
