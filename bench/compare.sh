#!/bin/bash
# Whole conversions against the floor and against copying their outputs, in one interleaved run:
#
#   bench/compare.sh BUILD_DIRECTORY [WORK_DIRECTORY]
#
# Recordings are made by ord_synth. Measured are the command alone on one core ("1 thread": its
# CPU time counts) and with all its threads (wall time counts); the floor, a program that makes the
# same reads and files and nothing else; cp -r of the outputs; and zstd -d and flac -d giving the
# same samples. Before each timed run as much is written and removed in the same file system, so
# that every run finds memory in the same state, and its inputs are read once. The case "cold" is
# measured twice: so, and after memory that was freed has waited COLD_SECONDS (default 8).
#
# REPEATS (default 7) runs a case; SECONDS_LONG (default 60) and CASES choose less. The ratios are
# written to BUILD_DIRECTORY/bench/ratios.json; bench/regressions.py compares them.
set -euo pipefail

build=$(realpath "${1:?usage: bench/compare.sh BUILD_DIRECTORY [WORK_DIRECTORY]}")
work=$(mktemp -d "${2:-/dev/shm}/stalwick-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
python3 "$(dirname "$0")/compare.py" "$build" "$work"
