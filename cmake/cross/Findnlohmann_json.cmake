# SPDX-License-Identifier: BSD-3-Clause

# Debian's nlohmann-json3-dev, header-only, for a cross build; see FindBoost.cmake.
if(NOT TARGET nlohmann_json::nlohmann_json)
    add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
    target_compile_options(nlohmann_json::nlohmann_json INTERFACE "SHELL:-idirafter /usr/include")
endif()
find_file(NLOHMANN_JSON_HEADER nlohmann/json.hpp PATHS /usr/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(nlohmann_json REQUIRED_VARS NLOHMANN_JSON_HEADER)
