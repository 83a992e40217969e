#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Converts recordings with the program itself, by keyboard and mouse alone, and compares the files
# with those of stalwick-convert.
#   process_test.sh BUILD_DIRECTORY
# Runs itself again on a separate display: without a window manager, a window never learns that it
# is active.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
if [ -z "${STALWICK_TEST_DISPLAY:-}" ]; then
    STALWICK_TEST_DISPLAY=own exec "$here/../../scripts/with-display.sh" "$0" "$@"
fi
. "$here/window_keys.sh"

build=$(cd "$1" && pwd)
work=$(mktemp -d)
export XDG_RUNTIME_DIR=$work/runtime XDG_CONFIG_HOME=$work/config QT_QPA_PLATFORM=xcb
mkdir -m 700 "$XDG_RUNTIME_DIR"
mkdir "$work/in" "$work/expected"
program=
clean_up() {
    [ -z "$program" ] || kill "$program" 2> /dev/null || true
    rm -rf "$work"
}
trap clean_up EXIT

# A file dialog: the path and Enter, once more for its list of completions. Keys that arrive while
# a busy machine moves the focus are lost: then the function repeats all of it and replaces the
# text.
type_path() {
    xdotool key --clearmodifiers alt+n
    xdotool key --clearmodifiers ctrl+a
    xdotool type --delay 2 "$2"
    for _ in 1 2 3; do
        sleep 0.3
        ! no_window_named "$1" || return 0
        xdotool key Return
    done
    sleep 0.3
    no_window_named "$1"
}
enter_path() {
    wait_for active_window_is "$1"
    wait_for type_path "$1" "$2"
}

for seed in 1 2; do
    "$build/tools/ord_synth/ord_synth" --quiet --channels 32 --seconds 0.5 --all --seed $seed \
        --output "$work/in/rec$seed.ord"
done
# Started as by a desktop, with a recording to open. A caller may ignore these signals.
cd "$work/in"
env --default-signal=XFSZ,PIPE "$build/app/stalwick" rec2.ord missing.ord 2> "$work/messages" &
program=$!
wait_for window_named "$main"
window=$(window_named "$main")

press "$main" alt+n
dismiss_message() {
    wait_for message_shown
    wait_for press_enter_until_main
}
wait_for test -e "$work/in/rec2/Events.vev"
dismiss_message
grep -q 'missing.ord: ignored' "$work/messages" || fail "a missing file was not reported"

# By keyboard: choose a recording, an output directory and every output, and start.
mkdir "$work/out"
press "$main" alt+i
enter_path 'Open Veltrosyn Wireless Raw Data File...' "$work/in/rec1.ord"
press "$main" alt+o
enter_path 'Select Data Directory' "$work/out"
for key in b a u r; do press "$main" alt+$key; done
press "$main" Escape
press "$main" Return
[ ! -e "$work/out/rec1" ] || fail "Enter or Escape started a conversion"
# A mnemonic acts about 100 ms after its key.
sleep 0.5
press "$main" alt+n
wait_for test -e "$work/out/rec1/RawData.vrd"
dismiss_message

# By mouse: the button in the lower right corner starts a second conversion of the same file.
eval "$(xdotool getwindowgeometry --shell "$window")"
xdotool mousemove --window "$window" $((WIDTH - 100)) $((HEIGHT - 50)) click 1
wait_for test -e "$work/out/rec1/RawData_01.vrd"
dismiss_message

# Once more under a limit of the file size: the program continues, and the longest output ends
# there.
prlimit --pid "$program" --fsize=1000000:
press "$main" alt+n
wait_for test -e "$work/out/rec1/RawData_02.vrd"
dismiss_message
size=$(stat --format %s "$work/out/rec1/RawData_02.vrd")
[ "$size" -eq 1000000 ] || fail "RawData_02.vrd has $size bytes, the limit is 1000000"
rm "$work"/out/rec1/*_02.*

close_main

"$build/cli/stalwick-convert" --quiet --all --output-dir "$work/expected" "$work/in/rec1.ord"
"$build/cli/stalwick-convert" --quiet --output-dir "$work/expected" "$work/in/rec2.ord"
python3 "$here/compare_outputs.py" "$work/expected/rec1" "$work/out/rec1" twice
python3 "$here/compare_outputs.py" "$work/expected/rec2" "$work/in/rec2" once
