#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Draws every window of the program, light and dark, at 100 % and 200 %.
#   scripts/screenshots.sh BUILD_DIRECTORY [OUTPUT_DIRECTORY]
set -euo pipefail

build=$1
output=${2:-$build/screenshots}
mkdir -p "$output"
recordings=$(mktemp -d)
trap 'rm -rf "$recordings"' EXIT

seed=1
for name in 2026-03-14_rat07_open-field 2026-03-14_rat07_track 2026-03-15_rat07_rest; do
    "$build/tools/ord_synth/ord_synth" --quiet --channels 64 --seconds 0.1 --all --seed $seed \
        --output "$recordings/$name.ord"
    seed=$((seed + 1))
done

for theme in light dark; do
    for scale in 1 2; do
        QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} QT_SCALE_FACTOR=$scale \
            "$build/tests/app/window_screenshots" "$output" "$theme" "$recordings"/*.ord
    done
done
ls "$output"
