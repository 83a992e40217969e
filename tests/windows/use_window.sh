#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Uses the window under wine like a user: opens a recording, converts it, opens the About box from
# the system menu and from the window's own, and closes the window. The outputs are compared with
# those of the command. Run it on a display with a window manager:
#   scripts/with-display.sh tests/windows/use_window.sh BUILD [PICTURES]
# BUILD      of the preset windows-app
# PICTURES   directory for pictures of all that was seen; default: BUILD/window-pictures
set -euo pipefail

build=$(cd "$1" && pwd)
pictures=${2:-$build/window-pictures}
mkdir -p "$pictures"
pictures=$(cd "$pictures" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../app/window_keys.sh"
wine=$here/../../scripts/run-under-wine.sh
work=$(mktemp -d)
clean_up() {
    [ -z "${program:-}" ] || kill "$program" 2> /dev/null || true
    rm -rf "$work"
}
trap clean_up EXIT

fail() {
    import -window root "$pictures/failed.png" || true
    echo "FAILED: $* (see $pictures/failed.png)" >&2
    exit 1
}

# The first frame drawn may be empty.
take_picture() {
    sleep 1
    import -window root "$pictures/$1.png"
}

mkdir "$work/in" "$work/expected"
"$wine" "$build/tools/ord_synth/ord_synth.exe" --quiet --channels 64 --seconds 40 --all \
    --output "Z:$work/in/plain.ord"
mv "$work/in/plain.ord" "$work/in/rat 07 крыса.ord"

"$wine" "$build/app/stalwick.exe" "Z:$work/in/rat 07 крыса.ord" &
program=$!
wait_for window_named "$main"
window=$(window_named "$main")
press "$main" alt+f
xdotool key --clearmodifiers Down Return  # shows the header
take_picture window

for menu in system window; do
    case $menu in
        system) press "$main" alt+space && sleep 1 && xdotool key Up ;;
        window) press "$main" alt+h ;;
    esac
    take_picture "$menu-menu"
    case $menu in
        system) xdotool key Return ;;
        window) xdotool key a ;;
    esac
    wait_for window_named 'About Stalwick'
    take_picture "about-by-$menu-menu"
    press 'About Stalwick' Return
    wait_for no_window_named 'About Stalwick'
done

press "$main" alt+b
xdotool key --clearmodifiers alt+a alt+u alt+r
sleep 0.5
press "$main" alt+n
wait_for window_named 'Data Conversion'
# Its first pictures may show an empty frame; the last one with the dialog is kept.
rm -f "$pictures/progress.png"
while import -window root "$work/picture.png" && window_named 'Data Conversion' > /dev/null; do
    mv "$work/picture.png" "$pictures/progress.png"
done
[ -s "$pictures/progress.png" ] || fail "the progress dialog was gone before its picture"
wait_for message_shown
take_picture message
wait_for press_enter_until_main

close_main

"$wine" "$build/cli/stalwick-convert.exe" --quiet --all --output-dir "Z:$work/expected" \
    "Z:$work/in/rat 07 крыса.ord"
python3 "$here/../app/compare_outputs.py" "$work/expected/rat 07 крыса" \
    "$work/in/rat 07 крыса" once
ls "$pictures"
