#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Reports every source file that git tracks or would add and that does not name its license.
set -euo pipefail
cd "$(dirname "$0")/.."

missing=$(git ls-files -coz --exclude-standard -- '*.cpp' '*.h' '*.in' '*.py' '*.sh' '*.m' '*.mjs' '*.nsi' \
    '*.cmake' '*CMakeLists.txt' Makefile workflow .ci/run ':!*.1.in' ':!*.yaml' ':!*.toml' |
    xargs -0 grep -L '^[^ ]* SPDX-License-Identifier: BSD-3-Clause$' || true)
[ -z "$missing" ] || {
    echo "Add \"SPDX-License-Identifier: BSD-3-Clause\" as a comment to:"
    echo "$missing"
    exit 1
}
