#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Makes pages of recordings with and without faults and checks them in headless Chromium:
#   scripts/check-pages.sh BUILD_DIRECTORY
# Pictures and PDFs stay in BUILD_DIRECTORY/pages; page.png among them is that of docs/images.
# playwright-core and axe-core come from npm.
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "$0")/.."
pages=$build/pages
mkdir -p "$pages"

npm install --silent --no-audit --no-fund --prefix "$pages/modules" playwright-core@1 axe-core@4 > /dev/null
synth=$build/tools/ord_synth/ord_synth
"$synth" -q -f --all -c 256 -s 8 -o "$pages/healthy.ord"
"$synth" -q -f --all -c 128 -s 20 --gap 3:0.1 --gap 7:0.5 --flat 5,6 --clipped 40 --noisy 77-79 \
    --drop-bytes 40000000:900 -o "$pages/faulty.ord"
"$synth" -q -f -c 32 -s 0.01 --file-version 1.0 -o "$pages/short.ord"
status=0
(cd "$pages" && "$build/cli/stalwick-inspect" report {healthy,faulty,short}.ord -o all.html 2> messages) || status=$?
[ "$status" = 3 ] || { cat "$pages/messages" >&2; exit 1; }
node tests/pages/check_pages.mjs "$pages/modules" "$pages" "$pages"/all.html "$pages"/all-*.html
"${CHROMIUM:-chromium}" --headless --no-sandbox --hide-scrollbars --window-size=900,1180 \
    --screenshot="$pages/page.png" "file://$pages/all-faulty.html" 2> "$pages/messages"
