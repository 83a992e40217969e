#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# The cost of having data on the disk before a header says that a file was closed.
#   bench/sync_cost.sh BUILD DIRECTORY [ROUNDS]      DIRECTORY is on the disk to be measured
# Seconds of each round: conversion, conversion with --no-sync, cp -r of its outputs with sync.
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d -p "$2")
rounds=${3:-5}
trap 'rm -rf "$work"' EXIT

seconds_of() {
    local start=$EPOCHREALTIME
    "$@" > /dev/null
    echo "$EPOCHREALTIME $start" | awk '{ printf "%.2f", $1 - $2 }'
}
copy_and_sync() {
    cp -r "$work/out" "$work/copy"
    sync "$work"/copy/*/*
}

"$build/tools/ord_synth/ord_synth" --channels 256 --seconds 30 -o "$work/rec.ord" > /dev/null
convert=("$build/cli/stalwick-convert" --quiet "$work/rec.ord" -o "$work/out")
echo "converted  no-sync  cp+sync  (seconds)"
for ((round = 0; round < rounds; round++)); do
    rm -rf "$work/out" "$work/copy"; sync
    without=$(seconds_of "${convert[@]}" --no-sync)
    rm -rf "$work/out"; sync
    with=$(seconds_of "${convert[@]}")
    copy=$(seconds_of copy_and_sync)
    echo "$with  $without  $copy"
done
du -sm "$work/out" | awk '{ print $1 " MB of outputs" }'
