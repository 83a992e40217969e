# SPDX-License-Identifier: BSD-3-Clause

# Debian's libkissfft-dev, of which only the header of the C++ template is used, for a cross build;
# see FindBoost.cmake.
if(NOT TARGET KissFFT::KissFFT)
    add_library(KissFFT::KissFFT INTERFACE IMPORTED)
    target_compile_options(KissFFT::KissFFT INTERFACE "SHELL:-idirafter /usr/include")
endif()
find_file(KISSFFT_HEADER kissfft/kissfft.hh PATHS /usr/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(KissFFT REQUIRED_VARS KISSFFT_HEADER)
