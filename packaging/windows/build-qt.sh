#!/bin/sh
# Builds Qt's base libraries, static, for 64-bit Windows from Debian's own source package, and
# installs them into a cache outside the source tree. Prints the installed prefix on standard output.
#
#   packaging/windows/build-qt.sh [-j N]
#
# A finished build is kept and found again; one that was cut off goes on where it stopped.
# Needs: g++-mingw-w64-x86-64-posix, qt6-base-dev, qt6-base-dev-tools, cmake, ninja-build, dpkg-dev
# (scripts/install-deps.sh windows-app).
set -eu

jobs=$(nproc)
case ${1-} in
-j) jobs=$2 ;;
-j*) jobs=${1#-j} ;;
'') ;;
*)
    echo "usage: $0 [-j N]" >&2
    exit 2
    ;;
esac

here=$(cd "$(dirname "$0")" && pwd)
toolchain=$here/../../cmake/toolchains/mingw-w64-x86_64.cmake
version=$(dpkg-query -W -f '${source:Version}' qt6-base-dev)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/stalwick
prefix=$cache/qt-mingw-$version
work=$prefix.work
lib_arch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)

# A prefix exists only as a whole: it is renamed into place as the last step.
if [ -d "$prefix" ]; then
    echo "$prefix"
    exit 0
fi

# Makes a private copy of the system's package lists that names the sources too, so that nothing
# under /etc changes and no other user's apt is affected.
write_source_lists() {
    mkdir -p "$work/apt/parts" "$work/apt/lists/partial" "$work/apt/cache/archives/partial"
    for list in /etc/apt/sources.list.d/*.sources; do
        [ -e "$list" ] || continue
        sed 's/^Types:.*/Types: deb-src/' "$list" >"$work/apt/parts/$(basename "$list")"
    done
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -e "$list" ] || continue
        sed -n 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$list" \
            >"$work/apt/parts/$(basename "$list" .list).list"
    done
}

private_apt() {
    apt-get -q \
        -o Dir::Etc::SourceList=/dev/null \
        -o Dir::Etc::SourceParts="$work/apt/parts" \
        -o Dir::State::Lists="$work/apt/lists" \
        -o Dir::Cache="$work/apt/cache" \
        -o APT::Sandbox::User=root \
        "$@" >&2
}

# An extracted tree is moved into place after it was patched, so a cut-off step is done again.
fetch_source() {
    [ -d "$work/source" ] && return
    write_source_lists
    private_apt update
    rm -rf "$work/fetch"
    mkdir -p "$work/fetch"
    (cd "$work/fetch" && private_apt source --only-source "qt6-base=$version")
    tree=$(find "$work/fetch" -mindepth 1 -maxdepth 1 -type d)
    patch_source "$tree"
    mv "$tree" "$work/source"
}

# Two conditions ask for dynamic OpenGL without asking whether there is OpenGL at all.
patch_source() {
    file=$1/src/plugins/platforms/windows/qwindowswindow.cpp
    sed -i 's/QT_CONFIG(dynamicgl)$/QT_CONFIG(dynamicgl) \&\& QT_CONFIG(opengl)/' "$file"
    changed=$(grep -c 'QT_CONFIG(dynamicgl) && QT_CONFIG(opengl)$' "$file")
    if [ "$changed" -ne 2 ]; then
        echo "$file: expected two conditions on dynamicgl, changed $changed; look at it anew" >&2
        exit 1
    fi
}

configure() {
    set --
    for feature in sql network dbus opengl vulkan printsupport tabletevent concurrent xml glib icu; do
        set -- "$@" "-DFEATURE_$feature=OFF"
    done
    for feature in zlib png jpeg freetype harfbuzz pcre2 doubleconversion libb2; do
        set -- "$@" "-DFEATURE_system_$feature=OFF"
    done
    cmake -G Ninja -S "$work/source" -B "$work/build" \
        -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$prefix" \
        -DBUILD_SHARED_LIBS=OFF \
        -DQT_HOST_PATH=/usr \
        -DQT_HOST_PATH_CMAKE_DIR="/usr/lib/$lib_arch/cmake" \
        -DQT_BUILD_TESTS=OFF \
        -DQT_BUILD_EXAMPLES=OFF \
        "$@" >&2
}

mkdir -p "$cache"
fetch_source
[ -e "$work/build/build.ninja" ] || configure
cmake --build "$work/build" --parallel "$jobs" >&2
rm -rf "$work/stage"
DESTDIR=$work/stage cmake --install "$work/build" --strip >&2
mv "$work/stage$prefix" "$prefix"
rm -rf "$work"
echo "$prefix"
