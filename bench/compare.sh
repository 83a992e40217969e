#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause

# Compares whole conversions with the floor and with copying their outputs, in one interleaved run:
#
#   bench/compare.sh BUILD_DIRECTORY [WORK_DIRECTORY]
#
# ord_synth makes the recordings. This script measures the command alone on one core ("1 thread":
# its CPU time counts) and with all its threads (wall time counts); the floor, a program that only
# makes the same reads and files, with and without the same binding to one core; cp -r of the
# outputs; and zstd -d and flac -d of the same samples.
# Before each timed run the same amount is written and removed in the same file system, so that
# every run finds memory in the same state, and its inputs are read once. The case "cold" is
# measured twice: like this, and after freed memory has waited COLD_SECONDS (default 8).
#
# REPEATS (default 7) is the number of runs per case; SECONDS_LONG (default 60) and CASES reduce
# the work. The ratios are written to BUILD_DIRECTORY/bench/ratios.json; bench/regressions.py
# compares them.
set -euo pipefail

build=$(realpath "${1:?usage: bench/compare.sh BUILD_DIRECTORY [WORK_DIRECTORY]}")
work=$(mktemp -d "${2:-/dev/shm}/stalwick-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
python3 "$(dirname "$0")/compare.py" "$build" "$work"
