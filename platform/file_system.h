// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_calls.h"

namespace stalwick {

enum class PathKind { kMissing, kFile, kDirectory };

// What is at the path. A link counts as its target, a broken link as a file: its name is taken.
[[nodiscard]] PathKind QueryPath(const std::wstring& path);

// Whether the path is a regular file, following links: reading one never waits for another program,
// as reading a pipe or a device can. Nothing is opened.
[[nodiscard]] bool IsOrdinaryFile(const std::wstring& path);

// Bytes of the file at the path; 0 for anything else (a directory, a pipe) and if unknown. The file
// is not opened: a pipe that was opened and closed would lose its writer.
[[nodiscard]] std::uint64_t QueryFileSize(const std::wstring& path);

// The modification time of the contents at the path; none if unknown.
[[nodiscard]] std::optional<std::chrono::system_clock::time_point> QueryModificationTime(
    const std::wstring& path);

// Renames a file within one file system. If a file has the new name, replaces it in one step; if a
// directory has it, fails.
[[nodiscard]] SystemErrorCode RenameOver(const std::wstring& path, const std::wstring& newPath);

// Removes a file that this program made.
SystemErrorCode RemoveFile(const std::wstring& path);

// The space that a user may still fill on a file system.
struct FreeSpace {
    std::uint64_t bytes = 0;
    std::uint64_t fileSystem = 0;  // equal for paths on one file system
};

// For the file system of an existing directory; none if that is unknown, or if there is no disk.
[[nodiscard]] std::optional<FreeSpace> QueryFreeSpace(const std::wstring& directory);

// The path from the current directory on, whose name may have any bytes; an absolute path is
// unchanged. On Windows in the system's form: only `\`, and nothing to resolve. If the system
// cannot resolve the path, it is unchanged.
[[nodiscard]] std::wstring AbsolutePath(const std::wstring& path);

// The absolute path without links, `.` and `..`, so that two paths to the same place are equal; if
// the path does not exist, only the existing part is resolved. If the system cannot resolve the
// path, it is unchanged.
[[nodiscard]] std::wstring ResolvedPath(const std::wstring& path);

// Fills `names` with the names of everything in the directory, sorted.
[[nodiscard]] SystemErrorCode ListDirectory(const std::wstring& path,
                                            std::vector<std::wstring>& names);

// Creates one level; its parent must exist.
[[nodiscard]] SystemErrorCode CreateDirectoryLevel(const std::wstring& path);

}  // namespace stalwick
