# SPDX-License-Identifier: BSD-3-Clause

# Replaces CMake's own module: a Windows program takes a tenth of a second to start under wine, so
# a test program is one test, not one for each of its cases.
function(gtest_discover_tests target)
    add_test(NAME ${target} COMMAND ${target} --gtest_brief=1)
    set_tests_properties(${target} PROPERTIES TIMEOUT 1800)
endfunction()
