// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/file_calls.h"

namespace stalwick {

// A file to read, from its first byte to its last or at any position. Used by one thread; closes
// itself.
class InputFile {
  public:
    InputFile() = default;
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    InputFile(InputFile&& other) noexcept : handle_(std::exchange(other.handle_, kNoFile)) {}
    InputFile& operator=(InputFile&& other) noexcept;

    // Fails if the file is missing or a directory, or if a file is already open.
    [[nodiscard]] SystemErrorCode Open(const std::wstring& path);
    [[nodiscard]] bool IsOpen() const { return handle_ != kNoFile; }
    SystemErrorCode Close();

    // Reads exactly `size` bytes unless the file ends or a read fails first; `transferred` is the
    // number of bytes read. Fewer without an error means the end of the file.
    [[nodiscard]] SystemErrorCode Read(void* data, std::size_t size, std::size_t& transferred);

    // The same at an offset of a regular file, whatever was read before. Read a file either this
    // way or with Read().
    [[nodiscard]] SystemErrorCode ReadAt(std::uint64_t offset, void* data, std::size_t size,
                                         std::size_t& transferred) const;

    // Current size of the file in bytes; 0 if unknown.
    [[nodiscard]] std::uint64_t Size() const;

  private:
    FileHandle handle_ = kNoFile;
};

}  // namespace stalwick
