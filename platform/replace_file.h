#pragma once

#include <string>
#include <string_view>

#include "platform/file_calls.h"

namespace stalwick {

// Gives the path these contents, in place of those of a file that is there. They are written to a
// file of another name in the same directory, brought to the disk and renamed, so that whoever
// opens the path finds all of the old contents or all of the new ones, after a power cut too.
// Returns 0, or the reason why everything is as it was; or why the directory could not be brought
// to the disk: then the new contents are there, but may be gone after a power cut.
[[nodiscard]] SystemErrorCode ReplaceFile(const std::wstring& path, std::string_view contents);

// Whether ReplaceFile could create its file in the directory of `path`: 0, or why not. Nothing is
// left behind.
[[nodiscard]] SystemErrorCode TryReplaceFile(const std::wstring& path);

}  // namespace stalwick
