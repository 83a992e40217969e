// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <string_view>

#include "platform/file_calls.h"

namespace stalwick {

// Replaces the contents of the file at the path, or creates it. The new contents are written to a
// file of another name in the same directory, synced to the disk and renamed, so that whoever opens
// the path finds either all of the old contents or all of the new ones, even after a power cut.
// Returns 0, or the reason why nothing has changed; or why the directory could not be synced: then
// the new contents are in place, but may be lost after a power cut.
[[nodiscard]] SystemErrorCode ReplaceFile(const std::wstring& path, std::string_view contents);

// Whether ReplaceFile could create its file in the directory of `path`: returns 0, or why not.
// Leaves nothing in the directory.
[[nodiscard]] SystemErrorCode TryReplaceFile(const std::wstring& path);

}  // namespace stalwick
