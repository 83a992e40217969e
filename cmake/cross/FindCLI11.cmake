# SPDX-License-Identifier: BSD-3-Clause

# Debian's CLI11, header-only, for a cross build; see FindBoost.cmake.
if(NOT TARGET CLI11::CLI11)
    add_library(CLI11::CLI11 INTERFACE IMPORTED)
    target_compile_options(CLI11::CLI11 INTERFACE "SHELL:-idirafter /usr/include")
endif()
find_file(CLI11_HEADER CLI/CLI.hpp PATHS /usr/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(CLI11 REQUIRED_VARS CLI11_HEADER)
