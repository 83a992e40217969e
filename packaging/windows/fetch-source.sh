#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause

# Fetches the Debian source of an installed package, in the installed version.
#
#   packaging/windows/fetch-source.sh PACKAGE DIRECTORY
#
# DIRECTORY must not exist; it appears as a whole when all is done. Needs dpkg-dev.
set -eu

if [ $# -ne 2 ]; then
    echo "usage: $0 PACKAGE DIRECTORY" >&2
    exit 2
fi
source=$(dpkg-query -W -f '${source:Package}=${source:Version}' "$1")
mkdir -p "$(dirname "$2")"
work=$(mktemp -d "$2.XXXXXX")
trap 'rm -rf "$work"' EXIT

# A private copy of the system's package lists that names the sources too, so that nothing under
# /etc changes and no other user's apt is affected.
write_source_lists() {
    mkdir -p "$work/parts" "$work/lists/partial" "$work/cache/archives/partial" "$work/tree"
    for list in /etc/apt/sources.list.d/*.sources; do
        [ -e "$list" ] || continue
        sed 's/^Types:.*/Types: deb-src/' "$list" >"$work/parts/$(basename "$list")"
    done
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -e "$list" ] || continue
        sed -n 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$list" \
            >"$work/parts/$(basename "$list" .list).list"
    done
}

private_apt() {
    apt-get -q \
        -o Dir::Etc::SourceList=/dev/null \
        -o Dir::Etc::SourceParts="$work/parts" \
        -o Dir::State::Lists="$work/lists" \
        -o Dir::Cache="$work/cache" \
        -o APT::Sandbox::User="$(id -un)" \
        "$@" >&2
}

write_source_lists
private_apt update
(cd "$work/tree" && private_apt source --only-source "$source")
mv "$(find "$work/tree" -mindepth 1 -maxdepth 1 -type d)" "$2"
