#pragma once

#include <string>

#include "platform/file_calls.h"

namespace stalwick {

// Makes sure that the output directory exists, creating one level. 0, or the system's error.
SystemErrorCode EnsureOutputDirectory(const std::wstring& directory);

// "Error creating output directory(...) ..." for a directory that cannot be had.
std::wstring OutputDirectoryErrorText(const std::wstring& directory);

}  // namespace stalwick
