// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/file_calls.h"

namespace stalwick {

// A file that this program creates. Used by one thread at a time; closes itself. Short writes and
// interruptions are continued until everything is written or a call fails.
class OutputFile {
  public:
    OutputFile() = default;
    ~OutputFile();
    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;

    // Creates the file; fails if anything has that name already.
    [[nodiscard]] SystemErrorCode CreateExclusive(const std::wstring& path);
    [[nodiscard]] bool IsOpen() const { return handle_ != kNoFile; }

    // Writes all of `data` at `offset` bytes from the file's start. If `written` is given, it is
    // set to the number of bytes that reached the file, even if a later call failed.
    [[nodiscard]] SystemErrorCode WriteAt(std::uint64_t offset, const void* data, std::size_t size,
                                          std::size_t* written = nullptr);

    // Truncates the file to its first `size` bytes; it has at least that many.
    [[nodiscard]] SystemErrorCode Truncate(std::uint64_t size);

    // Requests that a written range reach the disk soon. A hint without a result.
    void StartWriteBack(std::uint64_t offset, std::uint64_t size);

    // Returns when everything written is on the disk.
    [[nodiscard]] SystemErrorCode SyncData();

    // True if somebody has removed the open file: closing it would lose the data.
    [[nodiscard]] bool IsRemoved() const;

    SystemErrorCode Close();

  private:
    FileHandle handle_ = kNoFile;
};

// Returns when the names in the directory are on the disk, or if that cannot be requested.
[[nodiscard]] SystemErrorCode SyncDirectory(const std::wstring& path);

}  // namespace stalwick
