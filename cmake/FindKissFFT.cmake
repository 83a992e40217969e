# SPDX-License-Identifier: BSD-3-Clause

# The header of KissFFT's C++ template; Debian's own package file is for the compiled library.
find_path(KISSFFT_INCLUDE_DIR kissfft/kissfft.hh)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(KissFFT REQUIRED_VARS KISSFFT_INCLUDE_DIR)
if(KissFFT_FOUND AND NOT TARGET KissFFT::KissFFT)
    add_library(KissFFT::KissFFT INTERFACE IMPORTED)
    target_include_directories(KissFFT::KissFFT SYSTEM INTERFACE ${KISSFFT_INCLUDE_DIR})
endif()
