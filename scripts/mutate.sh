#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Changes one operator, constant or call at a time and checks whether a test notices:
# docs/testing.md.
#   scripts/mutate.sh DIRECTORY [--count N] [--seed N] [--only TEXT] [--list] [FOLDER...]
# DIRECTORY, outside the checkout, keeps a copy of the commit and the results; called again, the
# script continues there.
set -euo pipefail
[ $# -gt 0 ] || { sed -n '4,7s/^# //p' "$0" >&2; exit 2; }
directory=$1
shift
exec python3 "$(dirname "$0")/../tools/mutate/mutate.py" --directory "$directory" "$@"
