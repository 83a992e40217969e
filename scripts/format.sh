#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Formats every C++ file that git tracks or would add; with --check only reports files that are not formatted.
set -euo pipefail
cd "$(dirname "$0")/.."

arguments=(-i)
[ "${1:-}" != --check ] || arguments=(--dry-run --Werror)
git ls-files -coz --exclude-standard '*.cpp' '*.h' | xargs -0 clang-format "${arguments[@]}"
