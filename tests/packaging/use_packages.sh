#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# What a user does with the installed packages; run in the root by packages_test.sh.
#   use_packages.sh RECORDING
set -euo pipefail

recording=$1
outputs=$HOME/outputs

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# The log of a command that fails.
quietly() {
    "$@" > "$HOME/log" 2>&1 || { cat "$HOME/log" >&2; fail "$*"; }
    rm "$HOME/log"
}

quietly stalwick-convert --all -o "$outputs" "$recording"
quietly stalwick-inspect verify --against "$recording" "$outputs/night"
quietly stalwick-inspect info "$recording"
quietly stalwick-inspect report "$recording" -o "$outputs/report.html"
quietly stalwick-inspect plot "$recording" -o "$outputs/night.png"
[ "$(head -c 4 "$outputs/night.png" | tail -c 3)" = PNG ] || fail "the picture is no PNG"
echo "commands: converted, verified, drawn"

[ "$(stalwick --version)" = "stalwick $(stalwick-convert --version | cut -d' ' -f2)" ] || fail "stalwick --version"
status=0
QT_QPA_PLATFORM=offscreen timeout 3 stalwick "$recording" > "$HOME/log" 2>&1 || status=$?
[ "$status" -eq 124 ] || { cat "$HOME/log" >&2; fail "the window ended by itself with $status"; }
rm "$HOME/log"
plugin=$(find /usr/lib -name libqxcb.so)
[ "$plugin" ] || fail "the window has nothing to open on a display with"
! ldd "$plugin" /usr/bin/stalwick | grep 'not found' || fail "the window lacks a library"
echo "window: $(stalwick --version), and open for 3 s without a display"

python3 /tmp/read_outputs.py "$outputs/night" "$recording"

for page in stalwick stalwick-convert stalwick-inspect; do
    [ "$(man -w "$page")" = "/usr/share/man/man1/$page.1.gz" ] || fail "man $page"
    quietly mandoc -Tlint -Wwarning "/usr/share/man/man1/$page.1.gz"
done
shell_home=$(mktemp -d)
for command in stalwick-convert stalwick-inspect; do
    # What bash-completion finds by the command's name; it completes unknown commands with _minimal.
    # shellcheck disable=SC2016  # an argument of the inner shell
    bash --norc -c '. /usr/share/bash-completion/bash_completion; _completion_loader "$1"; complete -p "$1"' \
        bash "$command" 2> /dev/null | grep -v _minimal | grep -q -- '-F _' || fail "bash completes nothing for $command"
    # shellcheck disable=SC2016  # an argument of the inner shell
    [ "$(zsh -f -c 'autoload -Uz compinit; compinit -u -D; print $_comps[$1]' zsh "$command")" = "_$command" ] ||
        fail "zsh completes nothing for $command"
    HOME=$shell_home fish -c "complete -C '$command --'" | grep -q -- --version || fail "fish completes nothing for $command"
done
rm -r "$shell_home"
echo "manual pages and completions: found by man, bash, zsh and fish"

desktop-file-validate /usr/share/applications/com.veltrosyn.Stalwick.desktop
grep -qx '50:application/x-veltrosyn-ord:\*.ord' /usr/share/mime/globs2 || fail "*.ord has no type"
[ "$(sed -n 's/^[0-9]*:\(.*\):\*\.vcs$/\1/p' /usr/share/mime/globs2)" = text/calendar ] || fail "*.vcs is no calendar"
grep -q '^application/x-veltrosyn-ord=com.veltrosyn.Stalwick.desktop;' /usr/share/applications/mimeinfo.cache ||
    fail "nothing opens *.ord"
[ -s /usr/share/icons/hicolor/48x48/apps/stalwick.png ] || fail "no icon"
echo "desktop: *.ord opens the window, *.vcs is still a calendar"

for package in stalwick stalwick-cli python3-stalwick stalwick-doc; do
    grep -q 'License: BSD-3-Clause' "/usr/share/doc/$package/copyright" || fail "$package has no license"
done
[ -s /usr/share/doc/stalwick-cli/third-party/libkissfft-dev.txt ] || fail "no notices of what is compiled in"
for page in html/index.html html/user-guide.html html/stalwick-convert.html html/python-reference.html \
    examples/matlab/+stalwick/readSession.m examples/workflow/Snakefile examples/plot_channel.py; do
    [ -s "/usr/share/doc/stalwick/$page" ] || fail "no $page"
done
! find /usr/share/doc/stalwick/html /usr/share/doc/stalwick/examples -name '*.gz' | grep . || fail "pages are compressed"
echo "documentation: there"

unexpected=$(find "$HOME" -mindepth 1 -maxdepth 1 -not -name outputs -not -name .cache -newer /tmp/packages)
[ -z "$unexpected" ] || fail "left in the home: $unexpected"
