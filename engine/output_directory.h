// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "platform/file_calls.h"

namespace stalwick {

// Ensures that the output directory exists, creating one level. Returns 0 or the system's error. If
// `made` is given, it is set to whether this call created the directory.
[[nodiscard]] SystemErrorCode EnsureOutputDirectory(const std::wstring& directory,
                                                    bool* made = nullptr);

// The directory of a recording's outputs: named after it, in the output directory.
[[nodiscard]] std::wstring OutputDirectoryOf(const std::wstring& recording,
                                             const std::wstring& outputDirectory);

// "Error creating output directory(...) ..." for a directory that is unavailable.
[[nodiscard]] std::wstring OutputDirectoryErrorText(const std::wstring& directory);

}  // namespace stalwick
