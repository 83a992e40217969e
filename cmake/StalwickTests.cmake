# SPDX-License-Identifier: BSD-3-Clause

# stalwick_add_test(<folder> SOURCES ... [LINK ...]): the program <folder>_tests with the
# GoogleTest cases of one folder, each registered with CTest by name.

find_package(GTest REQUIRED)
include(GoogleTest)

function(stalwick_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINK")
    add_executable(${name}_tests ${ARG_SOURCES})
    target_link_libraries(${name}_tests PRIVATE
        stalwick_test_support ${ARG_LINK} GTest::gtest_main GTest::gmock)
    # Compiled with the same options and definitions only if the same libraries are linked.
    if(TARGET stalwick_test_headers AND "stalwick_test_harness" IN_LIST ARG_LINK)
        target_precompile_headers(${name}_tests REUSE_FROM stalwick_test_headers)
    endif()
    gtest_discover_tests(${name}_tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300 LABELS ${name})
endfunction()

# stalwick_add_window_test(<name> SOURCES ... [LINK ...]): the Qt Test suite <name>_test, drawn
# without a screen if the system's Qt can do so.
function(stalwick_add_window_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINK")
    add_executable(${name}_test ${name}_test.cpp ${ARG_SOURCES})
    set_target_properties(${name}_test PROPERTIES AUTOMOC ON)
    target_link_libraries(${name}_test PRIVATE stalwick_window_test ${ARG_LINK})
    if(STALWICK_SANITIZE)
        target_precompile_headers(${name}_test REUSE_FROM stalwick_window_test)
    endif()
    add_test(NAME window.${name} COMMAND ${name}_test)
    set_tests_properties(window.${name} PROPERTIES TIMEOUT 300 LABELS app)
    if(NOT WIN32)
        set_property(TEST window.${name} APPEND PROPERTY ENVIRONMENT
            QT_QPA_PLATFORM=offscreen
            TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/app/tsan.supp)
    endif()
endfunction()
