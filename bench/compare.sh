#!/bin/bash
# Whole conversions against copying their outputs, in one interleaved run:
#
#   bench/compare.sh BUILD_DIRECTORY [WORK_DIRECTORY]
#
# Recordings are made by ord_synth. Measured are the command alone on one core ("1 thread": its
# CPU time counts) and with its writer thread ("2 threads": wall time counts), cp -r of its
# outputs, and zstd -d and flac -d giving the same samples. Before each timed run as much is
# written and removed in the same file system, so that every run finds memory in the same state.
# REPEATS (default 7) runs a case; SECONDS_LONG (default 60) and CASES choose less.
set -euo pipefail

build=$(realpath "${1:?usage: bench/compare.sh BUILD_DIRECTORY [WORK_DIRECTORY]}")
work=$(mktemp -d "${2:-/dev/shm}/stalwick-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
exec python3 "$(dirname "$0")/compare.py" "$build" "$work"
