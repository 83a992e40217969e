#!/usr/bin/env bash
# Start-up time of the window, five times, and how quickly it answers while both cores are busy.
#   bench/window.sh BUILD_DIRECTORY
# Runs under an X server of its own with a window manager.
set -euo pipefail

if [ -z "${STALWICK_BENCH_DISPLAY:-}" ]; then
    STALWICK_BENCH_DISPLAY=own exec xvfb-run --auto-servernum \
        --server-args='-screen 0 1280x900x24' "$0" "$@"
fi

build=$1
work=$(mktemp -d)
export XDG_RUNTIME_DIR=$work/runtime QT_QPA_PLATFORM=xcb
mkdir -m 700 "$XDG_RUNTIME_DIR"
openbox --sm-disable --startup "touch $work/managed" > /dev/null 2>&1 &
windowManager=$!
trap 'kill $windowManager; rm -rf "$work"' EXIT
for _ in $(seq 100); do
    [ ! -e "$work/managed" ] || break
    sleep 0.1
done

for _ in 1 2 3 4 5; do
    "$build/bench/window_bench" "$(date +%s%N)" "" ""
done
"$build/tools/ord_synth/ord_synth" --quiet --channels 256 --seconds 10 --all --output "$work/long.ord"
"$build/bench/window_bench" "$(date +%s%N)" "$work/long.ord" "$work/out"
