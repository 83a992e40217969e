// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/forwarding_file_calls.h"

namespace stalwick::test {

/**
 * File calls on files that are byte strings in memory: none reaches the system. In place from
 * construction to destruction; may be used by several threads.
 */
class MemoryFileCalls final : public ForwardingFileCalls {
  public:
    std::map<std::wstring, std::string> files;  // by path
    std::size_t mostBytesPerRead = SIZE_MAX;
    unsigned openCount = 0;  // files open at this moment

    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override;
    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override;
    SystemErrorCode ReadAt(FileHandle handle, std::uint64_t offset, void* data, std::size_t size,
                           std::size_t& transferred) override;
    SystemErrorCode QuerySize(FileHandle handle, std::uint64_t& size) override;
    SystemErrorCode CreateExclusive(const std::wstring& path, FileHandle& handle) override;
    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override;
    SystemErrorCode StartWriteBack(FileHandle handle, std::uint64_t offset,
                                   std::uint64_t size) override;
    SystemErrorCode Truncate(FileHandle handle, std::uint64_t size) override;
    SystemErrorCode SyncData(FileHandle handle) override;
    SystemErrorCode SyncDirectory(const std::wstring& path) override;
    SystemErrorCode QueryRemoved(FileHandle handle, bool& removed) override;
    SystemErrorCode Close(FileHandle handle) override;

  private:
    struct OpenFile {
        std::string* bytes = nullptr;  // null: closed
        std::size_t position = 0;
    };
    FileHandle Add(std::string& bytes);
    std::size_t Copy(const std::string& bytes, std::size_t position, void* data,
                     std::size_t size) const;
    OpenFile& At(FileHandle handle) { return opened_.at(static_cast<std::size_t>(handle)); }

    std::mutex mutex_;
    std::vector<OpenFile> opened_;
};

}  // namespace stalwick::test
