# SPDX-License-Identifier: BSD-3-Clause

# Cross-compiles 64-bit Windows programs with Debian's mingw-w64 (posix threads).

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Libraries and packages come only from the cross tree: a library found in /usr would be a Linux
# one.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
# The prefix that packaging/windows/build-qt.sh printed, if the window is built as well.
if(STALWICK_QT_PREFIX)
    list(APPEND CMAKE_FIND_ROOT_PATH ${STALWICK_QT_PREFIX})
    set(QT_HOST_PATH /usr)
    set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES STALWICK_QT_PREFIX)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The system's stack is aligned to 16 bytes, but GCC moves 32-byte vectors to it as if it were
# aligned to 32. The assembler can make all such moves unaligned, which costs the same on aligned
# memory.
set(CMAKE_C_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
set(CMAKE_CXX_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")

# Every program is one file: libgcc, libstdc++ and winpthread are linked in.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
