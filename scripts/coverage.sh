#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Reports which lines and branches the tests have run in an instrumented build, and fails below the
# limits. Branches that only an exception takes are not counted.
#   scripts/coverage.sh BUILD
set -euo pipefail
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."

gcovr --root . "$build" --filter ord/ --filter writers/ --filter outputs/ --filter engine/ \
    --exclude-throw-branches --exclude-unreachable-branches \
    --html-details "$build/report.html" --txt "$build/report.txt" --print-summary \
    --fail-under-line 97 --fail-under-branch 90
