#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Start-up time of the window, five times, and how quickly it responds while both cores are busy.
#   bench/window.sh BUILD_DIRECTORY
# Runs on a separate display.
set -euo pipefail

if [ -z "${STALWICK_BENCH_DISPLAY:-}" ]; then
    STALWICK_BENCH_DISPLAY=own exec "$(dirname "$0")/../scripts/with-display.sh" "$0" "$@"
fi

build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_RUNTIME_DIR=$work/runtime QT_QPA_PLATFORM=xcb
mkdir -m 700 "$XDG_RUNTIME_DIR"

for _ in 1 2 3 4 5; do
    "$build/bench/window_bench" "$(date +%s%N)" "" ""
done
"$build/tools/ord_synth/ord_synth" --quiet --channels 256 --seconds 10 --all --output "$work/long.ord"
"$build/bench/window_bench" "$(date +%s%N)" "$work/long.ord" "$work/out"
