# SPDX-License-Identifier: BSD-3-Clause

# stalwick_add_windows_resources(<program> DESCRIPTION <text> MANIFEST <file> [ICON <file>]):
# version, manifest and icon of a Windows program. Does nothing elsewhere.
function(stalwick_add_windows_resources target)
    if(NOT WIN32)
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "DESCRIPTION;MANIFEST;ICON" "")
    set(iconLine)
    if(ARG_ICON)
        # The file manager shows the icon with the lowest number.
        set(iconLine "1 ICON \"${ARG_ICON}\"")
    endif()
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/program.rc.in ${script} @ONLY)
    set_source_files_properties(${script} PROPERTIES
        OBJECT_DEPENDS "${PROJECT_SOURCE_DIR}/packaging/windows/${ARG_MANIFEST};${ARG_ICON}")
    target_sources(${target} PRIVATE ${script})
endfunction()
