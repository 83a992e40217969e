#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause

# Installs, uses and removes the program silently under wine and checks the files each time.
#
#   packaging/windows/test-installer.sh PACKAGES ORD_SYNTH
#
# PACKAGES    the directory that package.sh filled
# ORD_SYNTH   a program for Linux that makes the recording
set -eu

if [ $# -ne 2 ]; then
    echo "usage: $0 PACKAGES ORD_SYNTH" >&2
    exit 2
fi
packages=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
wine=$here/../../scripts/run-under-wine.sh

STALWICK_WINE_PREFIX=$(mktemp -d)
export STALWICK_WINE_PREFIX
work=$(mktemp -d)
end() {
    WINEPREFIX=$STALWICK_WINE_PREFIX wineserver -k 2>/dev/null || true
    rm -rf "$STALWICK_WINE_PREFIX" "$work"
}
trap end EXIT
"$2" --quiet --channels 32 --seconds 2 --output "$work/recording.ord"
cd "$work"

failures=0
check() {
    what=$1
    shift
    if "$@"; then
        echo "ok      $what"
    else
        echo "FAILED  $what"
        failures=$((failures + 1))
    fi
}

ends_with() { case $1 in *"$2") ;; *) return 1 ;; esac; }

fails() { ! "$@"; }

# The commands in this directory convert the recording, and what they made is what it contains.
check_commands() {
    for command in stalwick-convert stalwick-inspect; do
        check "$command runs" "$wine" "$1/$command.exe" --version
    done
    rm -rf converted
    check "it converts a recording" "$wine" "$1/stalwick-convert.exe" --quiet --all -o converted recording.ord
    check "its outputs are the recording's" \
        "$wine" "$1/stalwick-inspect.exe" verify --against recording.ord converted/recording
}

# The uninstaller continues in a copy of itself after the program that was started has ended.
wait_until_gone() {
    for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15; do
        [ ! -e "$1" ] || sleep 1
    done
}

# The value of a key under HKEY_CURRENT_USER ("" names the unnamed value), or nothing.
registry() {
    key="HKCU\\$1"
    if [ -n "$2" ]; then set -- /v "$2"; else set -- /ve; fi
    "$wine" reg query "$key" "$@" 2>/dev/null | tr -d '\r' |
        sed -n 's/^ .*REG_[A-Z]*[[:space:]]*//p'
}

key_exists() { "$wine" reg query "HKCU\\$1" >/dev/null 2>&1; }

uninstall_key='Software\Microsoft\Windows\CurrentVersion\Uninstall\Veltrosyn Stalwick'
ord_key='Software\Classes\.ord'
type_key='Software\Classes\Veltrosyn.Stalwick.ord'
setup=$(ls "$packages"/stalwick-*-setup.exe)

"$wine" --prefix >/dev/null
user=$STALWICK_WINE_PREFIX/drive_c/users/$(id -un)
programs="$user/AppData/Local/Programs/Veltrosyn Stalwick"
menu="$user/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Veltrosyn Stalwick.lnk"

echo "Installing while .ord belongs to another program:"
"$wine" reg add "HKCU\\$ord_key" /ve /d Other.Program /f >/dev/null
check "setup succeeds" "$wine" "$setup" /S
check "the window is there" test -s "$programs/stalwick.exe"
check "the user guide is there" test -s "$programs/user-guide.html"
check_commands "$programs"
for command in stalwick-convert stalwick-inspect; do
    check "the manual page of $command is there" grep -q 'id="EXIT_STATUS"' "$programs/$command.html"
done
check "every link of a page leads to a file or an anchor there" "$here/check_pages.py" "$programs"
for part in boost cli11 gcc-runtime highway kissfft mingw-w64-runtime nlohmann-json qt stalwick LGPL-3 \
    GPL-3; do
    check "the licence is there: $part" test -s "$programs/licenses/$part.txt"
done
check "the licences are those of what is linked" \
    test "$(du --apparent-size -sk "$programs/licenses" | cut -f1)" -lt 500
check "the notices name what is linked" grep -q "^qt6-base " "$programs/THIRD-PARTY-NOTICES.txt"
check "a start menu entry is there" test -s "$menu"
check "Windows can list it" test -n "$(registry "$uninstall_key" DisplayVersion)"
check ".ord belongs to it" test "$(registry "$ord_key" '')" = Veltrosyn.Stalwick.ord
check ".ord opens with it" \
    ends_with "$(registry "$type_key\\shell\\open\\command" '')" '\stalwick.exe" "%1"'

echo "Installing over itself:"
check "setup succeeds" "$wine" "$setup" /S
check "the other program is still remembered" \
    test "$(registry "$uninstall_key" PreviousFileType)" = Other.Program

echo "Removing:"
echo "mine" >"$programs/notes.txt"
check "uninstaller succeeds" "$wine" "$programs/uninstall.exe" /S
wait_until_gone "$programs/uninstall.exe"
check "a user's own file stays" test -s "$programs/notes.txt"
check "nothing else stays" test "$(ls "$programs")" = notes.txt
check "the start menu entry is gone" test ! -e "$menu"
check "Windows no longer lists it" fails key_exists "$uninstall_key"
check "its file type is gone" fails key_exists "$type_key"
check ".ord is the other program's again" test "$(registry "$ord_key" '')" = Other.Program

echo "Installing into a chosen directory, and removing without a trace:"
"$wine" reg delete "HKCU\\$ord_key" /f >/dev/null
check "setup succeeds" "$wine" "$setup" /S '/D=C:\own\Ж'
own="$STALWICK_WINE_PREFIX/drive_c/own/Ж"
check "the command runs there" "$wine" "$own/stalwick-convert.exe" --version
check "uninstaller succeeds" "$wine" "$own/uninstall.exe" /S
wait_until_gone "$own"
check "the directory is gone" test ! -e "$own"
check ".ord is nobody's" fails key_exists "$ord_key"

echo "Unpacking the zip:"
(cd "$work" && cmake -E tar xf "$packages"/stalwick-*-windows-x64.zip)
check_commands "$(echo "$work"/stalwick-*-windows-x64)"
for command in stalwick-convert stalwick-inspect; do
    check "the manual page of $command is there" test -s "$work"/stalwick-*/"$command".html
done
check "every link of a page leads to a file or an anchor there" "$here/check_pages.py" "$work"/stalwick-*/

[ "$failures" -eq 0 ] || {
    echo "$failures checks failed" >&2
    exit 1
}
