#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_calls.h"

namespace stalwick {

enum class PathKind { kMissing, kFile, kDirectory };

// What stands at the path. A link counts as what it leads to, a broken link as a file: its name
// is taken.
[[nodiscard]] PathKind QueryPath(const std::wstring& path);

// Whether an ordinary file stands at the path, links followed: reading one never waits for another
// program, as reading a pipe or a device can. Nothing is opened.
[[nodiscard]] bool IsOrdinaryFile(const std::wstring& path);

// Bytes of the file at the path; 0 for anything else (a directory, a pipe) and where that is not
// known. The file is not opened: a pipe that was opened and closed would lose its writer.
[[nodiscard]] std::uint64_t QueryFileSize(const std::wstring& path);

// When the contents of what stands at the path changed last; none where that is not known.
[[nodiscard]] std::optional<std::chrono::system_clock::time_point> QueryModificationTime(
    const std::wstring& path);

// Gives a file another name on the same file system. A file that has that name is replaced in one
// step; with a directory of that name it fails.
[[nodiscard]] SystemErrorCode RenameOver(const std::wstring& path, const std::wstring& newPath);

// Removes a file that this program made.
SystemErrorCode RemoveFile(const std::wstring& path);

// What a user may still write to a file system.
struct FreeSpace {
    std::uint64_t bytes = 0;
    std::uint64_t fileSystem = 0;  // equal for paths on one file system
};

// Of the file system of an existing directory; none where that is not known,
// or where there is no disk behind it.
[[nodiscard]] std::optional<FreeSpace> QueryFreeSpace(const std::wstring& directory);

// The path from the current directory on, whose name may have any bytes; an absolute path as it is.
// On Windows in the system's form: with `\` only and nothing to resolve. The path itself where the
// system cannot say.
[[nodiscard]] std::wstring AbsolutePath(const std::wstring& path);

// The absolute path without links, `.` and `..`, so that two of the same place are equal; of a path
// that does not exist only what does exist is resolved. The path itself where the system cannot
// say.
[[nodiscard]] std::wstring ResolvedPath(const std::wstring& path);

// Fills `names` with those of everything that stands in the directory, sorted.
[[nodiscard]] SystemErrorCode ListDirectory(const std::wstring& path,
                                            std::vector<std::wstring>& names);

// Creates one level; its parent must exist.
[[nodiscard]] SystemErrorCode CreateDirectoryLevel(const std::wstring& path);

}  // namespace stalwick
