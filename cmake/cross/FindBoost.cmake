# SPDX-License-Identifier: BSD-3-Clause

# Debian's Boost headers for a cross build. `-idirafter` searches the C library's headers in the
# same directory after those of the cross compiler; a plain -I would find them first.
if(NOT TARGET Boost::headers)
    add_library(Boost::headers INTERFACE IMPORTED)
    target_compile_options(Boost::headers INTERFACE "SHELL:-idirafter /usr/include")
endif()
find_file(Boost_VERSION_HEADER boost/version.hpp PATHS /usr/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Boost REQUIRED_VARS Boost_VERSION_HEADER)
