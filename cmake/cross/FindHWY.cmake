# SPDX-License-Identifier: BSD-3-Clause

# Highway for a cross build: Debian ships its compiled part for Linux only, so that part is built
# from the sources that packaging/windows/fetch-highway.sh fetched.
#   STALWICK_HWY_SOURCE    their directory; without it Highway is not found
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(HWY REQUIRED_VARS STALWICK_HWY_SOURCE)
if(HWY_FOUND AND NOT TARGET HWY::HWY)
    add_library(hwy STATIC
        ${STALWICK_HWY_SOURCE}/hwy/aligned_allocator.cc
        ${STALWICK_HWY_SOURCE}/hwy/targets.cc)
    target_include_directories(hwy SYSTEM PUBLIC ${STALWICK_HWY_SOURCE})
    add_library(HWY::HWY ALIAS hwy)
endif()
