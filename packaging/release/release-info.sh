#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Prints the version of the release and the time that its files get, both from the only place that has them:
#   packaging/release/release-info.sh version|epoch
# The time is that of the release in the metainfo file, 0:00 UTC, unless SOURCE_DATE_EPOCH says another one.
set -euo pipefail
cd "$(dirname "$0")/../.."

case "${1-}" in
    version) sed -n 's/^project(stalwick VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt ;;
    epoch)
        date=$(sed -n '0,/<release /s/.*<release .*date="\([0-9-]*\)".*/\1/p' \
            packaging/linux/com.veltrosyn.Stalwick.metainfo.xml)
        echo "${SOURCE_DATE_EPOCH:-$(date --utc --date="$date" +%s)}" ;;
    *) echo "usage: $0 version|epoch" >&2; exit 2 ;;
esac
