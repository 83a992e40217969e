#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Reports every file that names another version than project() in CMakeLists.txt.
set -euo pipefail
cd "$(dirname "$0")/.."

version=$(sed -n 's/^project(stalwick VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
[ -n "$version" ] || { echo "check-version.sh: no project() with a version in CMakeLists.txt" >&2; exit 1; }

status=0
# check FILE WANTED PATTERN: the first line that matches PATTERN has WANTED as its first group.
check() {
    local found
    found=$(sed -nE "s|.*$3.*|\\1|p" "$1" | head -n 1)
    [ "$found" = "$2" ] && return
    echo "$1: version \"$found\", but CMakeLists.txt has $version"
    status=1
}
check python/stalwick/__init__.py "$version" '^__version__ = "(.*)"'
check CHANGELOG.md "$version" '^## (.*)'
check packaging/linux/com.veltrosyn.Stalwick.metainfo.xml "${version%.*}" '<release version="([^"]*)"'
exit $status
