#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/file_calls.h"

namespace stalwick {

// A file that is read, from its first byte to its last or at any place. Used by one thread; closes
// itself.
class InputFile {
  public:
    InputFile() = default;
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    InputFile(InputFile&& other) noexcept : handle_(std::exchange(other.handle_, kNoFile)) {}
    InputFile& operator=(InputFile&& other) noexcept;

    // Fails on a missing file, a directory, or when a file is open already.
    [[nodiscard]] SystemErrorCode Open(const std::wstring& path);
    [[nodiscard]] bool IsOpen() const { return handle_ != kNoFile; }
    SystemErrorCode Close();

    // Reads exactly `size` bytes unless the file ends or a read fails before; `transferred` says
    // how many came. Fewer without an error means the end of the file.
    [[nodiscard]] SystemErrorCode Read(void* data, std::size_t size, std::size_t& transferred);

    // The same at an offset of a regular file, whatever was read before. A file is read either so
    // or by Read().
    [[nodiscard]] SystemErrorCode ReadAt(std::uint64_t offset, void* data, std::size_t size,
                                         std::size_t& transferred) const;

    // Bytes in the file at this moment; 0 where that is not known.
    [[nodiscard]] std::uint64_t Size() const;

  private:
    FileHandle handle_ = kNoFile;
};

}  // namespace stalwick
