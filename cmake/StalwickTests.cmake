# stalwick_add_test(<folder> SOURCES ... [LINK ...]): the program <folder>_tests with the
# GoogleTest cases of one folder, each known to CTest by its own name.

find_package(GTest REQUIRED)
include(GoogleTest)

function(stalwick_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINK")
    add_executable(${name}_tests ${ARG_SOURCES})
    target_link_libraries(${name}_tests PRIVATE
        stalwick_test_support ${ARG_LINK} GTest::gtest_main GTest::gmock)
    gtest_discover_tests(${name}_tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300 LABELS ${name})
endfunction()
