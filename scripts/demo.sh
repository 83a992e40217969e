#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Makes a recording of two seconds, converts it with every output, and prints what was written.
#   scripts/demo.sh BUILD_DIRECTORY
set -euo pipefail

build=$1
demo=$build/demo
rm -rf "$demo"
mkdir -p "$demo"

echo "== a recording of 2 s: 64 channels, TTL pulses, both inertial units, ultrasonic bursts"
"$build/tools/ord_synth/ord_synth" --channels 64 --seconds 2 --all --output "$demo/recording.ord"
head -c 16384 "$demo/recording.ord" | tr -d '\0'

echo
echo "== stalwick-convert --all recording.ord"
"$build/cli/stalwick-convert" --all "$demo/recording.ord"

echo
echo "== $demo/recording: $(find "$demo/recording" -type f | wc -l) files"
(cd "$demo/recording" && du -ch --apparent-size -- * | sort -k 2V)
