#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause

# Builds Qt's base libraries, static, for 64-bit Windows from Debian's own source package, and
# installs them into a cache outside the source tree. Prints the installed prefix on standard output.
#
#   packaging/windows/build-qt.sh [-j N]
#
# A finished build is kept and reused; an interrupted one continues where it stopped.
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

# Two conditions test for dynamic OpenGL without testing for OpenGL at all.
patch_source() {
    file=$1/src/plugins/platforms/windows/qwindowswindow.cpp
    sed -i 's/QT_CONFIG(dynamicgl)$/QT_CONFIG(dynamicgl) \&\& QT_CONFIG(opengl)/' "$file"
    changed=$(grep -c 'QT_CONFIG(dynamicgl) && QT_CONFIG(opengl)$' "$file")
    if [ "$changed" -ne 2 ]; then
        echo "$file: expected two conditions on dynamicgl, changed $changed; look at it anew" >&2
        exit 1
    fi
}

# A tree is moved into place after it was patched, so an interrupted step is repeated.
fetch_source() {
    if [ -d "$work/source" ]; then return; fi
    rm -rf "$work/fetched"
    "$here/fetch-source.sh" qt6-base-dev "$work/fetched"
    patch_source "$work/fetched"
    mv "$work/fetched" "$work/source"
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

mkdir -p "$work"
fetch_source
[ -e "$work/build/build.ninja" ] || configure
cmake --build "$work/build" --parallel "$jobs" >&2
rm -rf "$work/stage"
DESTDIR=$work/stage cmake --install "$work/build" --strip >&2
mv "$work/stage$prefix" "$prefix"
rm -rf "$work"
echo "$prefix"
