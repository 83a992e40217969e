#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Makes the program icon's PNGs from its SVG. Needs rsvg-convert (librsvg2-bin).
set -euo pipefail
cd "$(dirname "$0")/../app/resources"

for size in 16 24 32 48 64 128 256; do
    rsvg-convert --width "$size" --height "$size" --output "stalwick-$size.png" stalwick.svg
done
