// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace stalwick {

// The operating system's result of one call: 0, or its error number (errno, GetLastError).
// SystemErrorText() turns it into words.
using SystemErrorCode = int;

// The operating system's name for an open file.
using FileHandle = std::intptr_t;
inline constexpr FileHandle kNoFile = -1;

// Every byte that enters or leaves the program through a file passes through one of these calls.
// They are the one place where a test can make a disk full, a read fail or a write short. Each call
// makes one attempt: the caller continues partial transfers and interruptions.
class FileCalls {
  public:
    virtual ~FileCalls() = default;

    // Opens a file, never a directory, for reading from its first byte.
    [[nodiscard]] virtual SystemErrorCode OpenForReading(const std::wstring& path,
                                                         FileHandle& handle) = 0;
    // Reads up to `size` bytes at the file's position; `transferred` is 0 at the end of the file.
    [[nodiscard]] virtual SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                                               std::size_t& transferred) = 0;
    // The same at an offset of a regular file; the position of a later Read() is undefined.
    [[nodiscard]] virtual SystemErrorCode ReadAt(FileHandle handle, std::uint64_t offset,
                                                 void* data, std::size_t size,
                                                 std::size_t& transferred) = 0;
    // Size in bytes; 0 if the file has none (a pipe).
    [[nodiscard]] virtual SystemErrorCode QuerySize(FileHandle handle, std::uint64_t& size) = 0;

    // Creates a file that did not exist; fails if anything has that name, including a link.
    [[nodiscard]] virtual SystemErrorCode CreateExclusive(const std::wstring& path,
                                                          FileHandle& handle) = 0;
    [[nodiscard]] virtual SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset,
                                                  const void* data, std::size_t size,
                                                  std::size_t& transferred) = 0;
    // Requests that the range be written to the disk soon, without waiting for it.
    virtual SystemErrorCode StartWriteBack(FileHandle handle, std::uint64_t offset,
                                           std::uint64_t size) = 0;
    // Truncates a file to its first `size` bytes; it has at least that many.
    [[nodiscard]] virtual SystemErrorCode Truncate(FileHandle handle, std::uint64_t size) = 0;
    // Returns when everything written to the file is on the disk.
    [[nodiscard]] virtual SystemErrorCode SyncData(FileHandle handle) = 0;
    // Returns when the names in a directory are on the disk; returns at once if its file system or
    // its permissions do not allow this request.
    [[nodiscard]] virtual SystemErrorCode SyncDirectory(const std::wstring& path) = 0;
    // Whether the open file has lost its name, so that nobody can find it after closing. False if
    // the system keeps the names of open files.
    virtual SystemErrorCode QueryRemoved(FileHandle /*handle*/, bool& removed) {
        removed = false;
        return 0;
    }
    virtual SystemErrorCode Close(FileHandle handle) = 0;
};

// The operating system's own calls.
[[nodiscard]] FileCalls& SystemFileCalls();

// The calls in use: the system's, unless a test has replaced them.
[[nodiscard]] FileCalls& CurrentFileCalls();

// For tests: installs `calls` (null: the system's) and returns the previous ones. Call it only
// while no file is open and no other thread works on one.
FileCalls* SetFileCalls(FileCalls* calls);

}  // namespace stalwick
