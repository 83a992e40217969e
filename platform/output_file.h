#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/file_calls.h"

namespace stalwick {

// A file that this program creates and nobody had before. Used by one thread at a time; closes
// itself. Short writes and interruptions are continued until all is written or a call fails.
class OutputFile {
  public:
    OutputFile() = default;
    ~OutputFile();
    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;

    // Creates the file; fails on anything that has the name already.
    [[nodiscard]] SystemErrorCode CreateExclusive(const std::wstring& path);
    [[nodiscard]] bool IsOpen() const { return handle_ != kNoFile; }

    // Writes all of `data` at `offset` bytes from the file's start. `written`, if asked for, is how
    // many bytes are in the file, also where a later one failed.
    [[nodiscard]] SystemErrorCode WriteAt(std::uint64_t offset, const void* data, std::size_t size,
                                          std::size_t* written = nullptr);

    // Cuts the file to its first `size` bytes; it has at least as many.
    [[nodiscard]] SystemErrorCode Truncate(std::uint64_t size);

    // Asks for a written range to be brought to the disk soon. Advice: it has no result.
    void StartWriteBack(std::uint64_t offset, std::uint64_t size);

    // Returns when everything written is on the disk.
    [[nodiscard]] SystemErrorCode SyncData();

    // True when somebody has removed the open file: closing it would lose what was written.
    [[nodiscard]] bool IsRemoved() const;

    SystemErrorCode Close();

  private:
    FileHandle handle_ = kNoFile;
};

// Returns when the names that stand in the directory are on the disk, or cannot be asked for.
[[nodiscard]] SystemErrorCode SyncDirectory(const std::wstring& path);

}  // namespace stalwick
