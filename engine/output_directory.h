#pragma once

#include <string>

#include "platform/file_calls.h"

namespace stalwick {

// Makes sure that the output directory exists, creating one level. 0, or the system's error.
// `made`, if asked for, is whether this call created it.
[[nodiscard]] SystemErrorCode EnsureOutputDirectory(const std::wstring& directory,
                                                    bool* made = nullptr);

// The directory of a recording's outputs: named after it, below the output directory.
[[nodiscard]] std::wstring OutputDirectoryOf(const std::wstring& recording,
                                             const std::wstring& outputDirectory);

// "Error creating output directory(...) ..." for a directory that is unavailable.
[[nodiscard]] std::wstring OutputDirectoryErrorText(const std::wstring& directory);

}  // namespace stalwick
