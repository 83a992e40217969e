# SPDX-License-Identifier: BSD-3-Clause

# GoogleTest, cross-compiled from Debian's package of its sources.
find_path(GTest_SOURCE_DIR googletest/include/gtest/gtest.h PATHS /usr/src/googletest
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(GTest REQUIRED_VARS GTest_SOURCE_DIR)
if(NOT TARGET gtest)
    set(INSTALL_GTEST OFF)
    add_subdirectory(${GTest_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()
foreach(library gtest gtest_main gmock gmock_main)
    if(NOT TARGET GTest::${library})
        add_library(GTest::${library} ALIAS ${library})
    endif()
endforeach()
