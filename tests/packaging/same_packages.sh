#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Makes the Debian packages once more, in another directory, and compares them with those that are there.
#   same_packages.sh PACKAGES
set -euo pipefail

cd "$(dirname "$0")/../.."
first=$(cd "$1" && pwd)
second=$(mktemp -d)
trap 'rm -rf "$second"' EXIT

TZ=Pacific/Auckland packaging/linux/build-packages.sh --directory /srv/another-place/sources "$second" > /dev/null
status=0
for file in "$second"/*.deb "$second"/*.changes; do
    name=$(basename "$file")
    cmp "$first/$name" "$file" || { diffoscope --max-report-size 20000 "$first/$name" "$file" || true; status=1; }
done
[ "$(find "$first" -name '*.deb' | wc -l)" = "$(find "$second" -name '*.deb' | wc -l)" ] || status=1
[ "$status" -eq 0 ] && echo "packages: the same in every byte"
exit "$status"
