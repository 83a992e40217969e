# SPDX-License-Identifier: BSD-3-Clause

# How every target of the project is compiled, and the only way to add a library or a program.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

find_package(Threads REQUIRED)

add_library(stalwick_options INTERFACE)
target_include_directories(stalwick_options INTERFACE ${PROJECT_SOURCE_DIR})
# Sums of doubles must be the same on every machine and compiler.
target_compile_options(stalwick_options INTERFACE -ffp-contract=off)
target_compile_options(stalwick_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
    -Wold-style-cast -Woverloaded-virtual)
if(MINGW)
    # Qt exports a symbol, and strip keeps the time of linking in the table of exports.
    target_link_options(stalwick_options INTERFACE -Wl,--no-insert-timestamp)
endif()
if(STALWICK_WARNINGS_AS_ERRORS)
    target_compile_options(stalwick_options INTERFACE -Werror)
endif()
if(STALWICK_SANITIZE)
    target_compile_options(stalwick_options INTERFACE
        -fsanitize=${STALWICK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(stalwick_options INTERFACE -fsanitize=${STALWICK_SANITIZE})
endif()

# stalwick_add_library(<folder> SOURCES ... [LINK ...]): the static library stalwick::<folder>.
function(stalwick_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINK")
    add_library(stalwick_${name} STATIC ${ARG_SOURCES})
    add_library(stalwick::${name} ALIAS stalwick_${name})
    target_link_libraries(stalwick_${name} PUBLIC stalwick_options ${ARG_LINK})
endfunction()
