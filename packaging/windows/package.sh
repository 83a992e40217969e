#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause

# Makes the zip and the installer from a build of the preset windows-app.
#
#   packaging/windows/package.sh BUILD PAGES OUTPUT
#
# BUILD    the build directory, with app/stalwick.exe and the commands in cli/
# PAGES    directory with the commands' manual pages, which a build for Linux makes
# OUTPUT   directory for stalwick-<version>-windows-x64.zip, its SBOM and stalwick-<version>-setup.exe
# The same commit gives the same three files, byte for byte.
# Needs: nsis, cmark-gfm, mandoc, zip, python3-debian (scripts/install-deps.sh windows-app release).
set -eu

if [ $# -ne 3 ]; then
    echo "usage: $0 BUILD PAGES OUTPUT" >&2
    exit 2
fi
mkdir -p "$3"
build=$(cd "$1" && pwd)
pages=$(cd "$2" && pwd)
output=$(cd "$3" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
release=$root/packaging/release

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:[A-Z]*=//p' "$build/CMakeCache.txt")
name=stalwick-$version-windows-x64
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stage=$work/$name
mkdir -p "$stage/licenses"
# strip writes this time into the programs; the zip stores local times, and globs sort by locale.
SOURCE_DATE_EPOCH=$("$release/release-info.sh" epoch)
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8

# Of Boost, only dynamic_bitset and the headers that it includes are used, all under one licence.
# Debian's own text covers every library and tool of Boost, 2 MB of it.
boost_license() {
    echo 'Boost C++ Libraries: Dynamic Bitset and the headers that it includes'
    echo
    awk '/^[^ ]/ { wanted = ($0 == "License: BSL-1.0") } wanted && /^ /' \
        /usr/share/doc/libboost1.74-dev/copyright | sed 's/^ \.$//; s/^ //'
}

# The licence of everything linked into the programs, named after the component.
copy_licenses() {
    for part in \
        qt=qt6-base-dev \
        cli11=libcli11-dev \
        highway=libhwy-dev \
        kissfft=libkissfft-dev \
        nlohmann-json=nlohmann-json3-dev \
        gcc-runtime=gcc-mingw-w64-x86-64-posix-runtime \
        mingw-w64-runtime=mingw-w64-x86-64-dev; do
        cp "/usr/share/doc/${part#*=}/copyright" "$stage/licenses/${part%%=*}.txt"
    done
    boost_license >"$stage/licenses/boost.txt"
    grep -q '^Boost Software License' "$stage/licenses/boost.txt"
    for text in LGPL-3 GPL-3; do
        cp "/usr/share/common-licenses/$text" "$stage/licenses/$text.txt"
    done
    if [ -e "$root/LICENSE" ]; then cp "$root/LICENSE" "$stage/licenses/stalwick.txt"; fi
}

cp "$build/app/stalwick.exe" "$build/cli/stalwick-convert.exe" "$build/cli/stalwick-inspect.exe" "$stage"
x86_64-w64-mingw32-strip "$stage/stalwick.exe" "$stage/stalwick-convert.exe" "$stage/stalwick-inspect.exe"
copy_licenses
"$here/make_pages.py" "$pages" "$stage"
"$here/check_pages.py" "$stage" >&2
set -- app/stalwick.exe cli/stalwick-convert.exe cli/stalwick-inspect.exe
"$release/write_notices.py" "$build" "$@" >"$stage/THIRD-PARTY-NOTICES.txt"

# The zip stores times and permissions of the files, the installer their times; zip adds to an existing file.
chmod -R u=rwX,go=rX "$stage"
find "$stage" -exec touch --date="@$SOURCE_DATE_EPOCH" {} +
rm -f "$output/$name.zip"
(cd "$work" && find "$name" | sort | zip -q -9 -X "$output/$name.zip" -@)
"$release/write_sbom.py" --version "$version" --archive "$output/$name.zip" "$build" "$@" >"$output/$name.spdx.json"

# The uninstaller names each file, so that it removes nothing else.
# shellcheck disable=SC2016  # a variable of the installer's
(cd "$stage" && printf '%s\n' *.html *.json *.txt licenses/*) |
    sed -e 's,/,\\,' -e 's,.*,Delete "$INSTDIR\\&",' >"$work/uninstall-files.nsh"

makensis -V2 -NOCD -INPUTCHARSET UTF8 \
    -DSTAGE="$stage" \
    -DUNINSTALL_FILES="$work/uninstall-files.nsh" \
    -DOUTPUT="$output/stalwick-$version-setup.exe" \
    -DICON="$build/app/stalwick.ico" \
    -DVERSION="$version" \
    "$here/installer.nsi" >&2

ls -l "$output/$name".* "$output/stalwick-$version-setup.exe"
