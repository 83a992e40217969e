#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Installs the program and checks the desktop's files with the desktop's own tools.
#   desktop_files_test.sh BUILD_DIRECTORY
set -euo pipefail

prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$1" --prefix "$prefix" > /dev/null
share=$prefix/share

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

desktop=$share/applications/com.veltrosyn.Stalwick.desktop
desktop-file-validate --warn-kde "$desktop"
read -r program files < <(sed -n 's/^Exec=//p' "$desktop")
[ -x "$prefix/bin/$program" ] || fail "the desktop file starts $program, which is not installed"
[ "$files" = %F ] || fail "the desktop gives the program no recordings"
grep -qx 'MimeType=application/x-veltrosyn-ord;' "$desktop" || fail "it opens other files than recordings"

metainfo=$share/metainfo/com.veltrosyn.Stalwick.metainfo.xml
appstreamcli validate --no-net --strict "$metainfo"
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:[A-Z]*=//p' "$1/CMakeCache.txt")
newest=$(sed -n 's/.*<release version="\([^"]*\)".*/\1/p' "$metainfo" | head -n 1)
[ "$newest" = "${version%.*}" ] || fail "the newest release listed is $newest, the program is $version"

for size in 16 24 32 48 64 128 256; do
    icon=$share/icons/hicolor/${size}x${size}/apps/stalwick.png
    [ "$(od -An -tu1 -j16 -N8 "$icon" | tr -s ' ')" = " 0 0 $((size / 256)) $((size % 256)) 0 0 $((size / 256)) $((size % 256))" ] ||
        fail "$icon is not $size pixels wide and high"
done
[ -s "$share/icons/hicolor/scalable/apps/stalwick.svg" ] || fail "no scalable icon"

update-mime-database "$share/mime" 2> /dev/null
grep -qx '50:application/x-veltrosyn-ord:\*.ord' "$share/mime/globs2" ||
    fail "*.ord is not application/x-veltrosyn-ord"
! grep -q 'vcs' "$share/mime/globs2" || fail "*.vcs belongs to calendars"
# Except for the system's own types, the recording's name alone decides.
if [ -e /usr/share/mime/globs2 ]; then
    ! grep -v veltrosyn /usr/share/mime/globs2 | grep -q ':\*\.ord$' || fail "*.ord is taken"
fi
page=$share/man/man1/stalwick.1
mandoc -Tlint -Wwarning "$page" || fail "the manual page has a fault"
grep -q "Stalwick $version" "$page" || fail "the manual page is of another version"
manual=$(mandoc -Tascii "$page" | sed 's/.\x08//g')
options=$("$prefix/bin/stalwick" --help | grep -o '^ *--[a-z]*')
for option in $options; do
    grep -q "^ *$option" <<< "$manual" || fail "the manual page lacks $option"
done
echo "desktop files: good"
