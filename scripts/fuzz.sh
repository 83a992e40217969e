#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Runs every fuzz target for SECONDS. The corpus grows in BUILD/corpus from run to run.
#   scripts/fuzz.sh BUILD SECONDS
# Exits with 1 if a target found something; the input is then in BUILD/finds. Make a test from it,
# and copy it to fuzz/finds/TARGET.
set -euo pipefail
build=$(cd "$1" && pwd)
seconds=$2
source_root=$(cd "$(dirname "$0")/.." && pwd)

# A find keeps its input, so the stack of every allocation is not needed; freed memory is watched
# for longer than one input takes.
export ASAN_OPTIONS=${ASAN_OPTIONS:-malloc_context_size=0:quarantine_size_mb=8}

status=0
for target in header_fields packet_decoder ord_reader packet_stream conversion; do
    corpus=$build/corpus/$target
    mkdir -p "$corpus" "$build/finds"
    "$build/fuzz/make_seeds_$target" "$build/corpus/$target-seeds"
    dictionary=$source_root/fuzz/header.dict
    [ "$target" = packet_decoder ] && dictionary=$source_root/fuzz/packets.dict
    # Recordings are read in small spans, so short recordings reach everything, ten times as fast.
    longest=()
    case "$target" in ord_reader | packet_stream | conversion) longest=(-max_len=4096 -entropic=0) ;; esac
    echo "== $target for $seconds s"
    "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=4096 \
        -dict="$dictionary" -artifact_prefix="$build/finds/$target-" -print_final_stats=1 \
        "${longest[@]}" "$corpus" "$build/corpus/$target-seeds" > "$build/finds/$target.log" 2>&1 || status=1
    grep -E '^(Done|SUMMARY|stat::number|#[0-9]+.*DONE)' "$build/finds/$target.log" || true
done
exit $status
