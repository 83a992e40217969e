#pragma once

#include <string>

#include "platform/file_calls.h"

namespace stalwick {

// Makes sure that the output directory exists, creating one level. 0, or the system's error.
// `made`, if asked for, is whether this call created it.
SystemErrorCode EnsureOutputDirectory(const std::wstring& directory, bool* made = nullptr);

// The directory of a recording's outputs: named after it, below the output directory.
std::wstring OutputDirectoryOf(const std::wstring& recording, const std::wstring& outputDirectory);

// "Error creating output directory(...) ..." for a directory that is unavailable.
std::wstring OutputDirectoryErrorText(const std::wstring& directory);

}  // namespace stalwick
