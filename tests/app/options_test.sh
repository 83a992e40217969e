#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# The window's program responds to --version and --help without a display, and exits.
#   options_test.sh BUILD_DIRECTORY
set -euo pipefail

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

program=$1/app/stalwick
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:[A-Z]*=//p' "$1/CMakeCache.txt")
without_display() { env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$@"; }

answer=$(without_display "$program" --version) || fail "--version ended with $?"
[ "$answer" = "stalwick $version" ] || fail "--version printed: $answer"
answer=$(without_display "$program" missing.ord --help) || fail "--help ended with $?"
for word in 'Usage: stalwick' --version stalwick-convert; do
    case $answer in
        *"$word"*) ;;
        *) fail "--help says nothing of $word" ;;
    esac
done
! without_display "$program" --version > /dev/full || fail "a full disk took the version"
echo "options: good"
