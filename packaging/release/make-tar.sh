#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Makes the archive of the commands that runs on any Linux, and its notices and SBOM:
#   packaging/release/make-tar.sh BUILD OUTPUT      BUILD: of the preset static; OUTPUT gets stalwick-VERSION-*
set -euo pipefail
build=$(realpath "$1")
mkdir -p "$2"
output=$(realpath "$2")
here=$(realpath "$(dirname "$0")")
root=$here/../..
programs=(cli/stalwick-convert cli/stalwick-inspect)

version=$("$here/release-info.sh" version)
SOURCE_DATE_EPOCH=$("$here/release-info.sh" epoch)
export SOURCE_DATE_EPOCH
name=stalwick-$version-linux-$(uname -m)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stage=$work/$name

cmake --install "$build" --prefix "$stage" --strip > /dev/null
"$here/write_notices.py" "$build" "${programs[@]}" > "$stage/THIRD-PARTY-NOTICES.txt"
sed "s/@VERSION@/$version/" "$here/README.txt" > "$stage/README.txt"
cp "$root/LICENSE" "$root/CHANGELOG.md" "$stage"

for program in "${programs[@]}"; do
    if readelf --program-headers "$stage/bin/$(basename "$program")" | grep -q INTERP; then
        echo "$program needs libraries of the system" >&2
        exit 1
    fi
done
"$here/pack.sh" "$stage" "$output/$name.tar.xz"
cp "$stage/THIRD-PARTY-NOTICES.txt" "$output/$name.notices.txt"
"$here/write_sbom.py" --version "$version" --archive "$output/$name.tar.xz" "$build" "${programs[@]}" \
    > "$output/$name.spdx.json"
ls -l "$output/$name".*
