// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "tests/support/forwarding_file_calls.h"

namespace stalwick::test {

/**
 * The system's file calls with faults: a disk that is full after some bytes, writes that write
 * little, calls that fail. In place from construction to destruction. Calls may
 * come from several threads; set the fields while none works on files.
 */
class FaultyFileCalls final : public ForwardingFileCalls {
  public:
    // Writes below this file offset are not counted: headers always fit. After `bytesUntilFull`
    // bytes of data the disk is full; the write that crosses the limit is first shortened.
    std::optional<std::uint64_t> bytesUntilFull;
    std::size_t mostBytesPerCall = SIZE_MAX;  // of a read or a write
    unsigned interruptionsPerCall = 0;        // EINTR this often before a call succeeds
    SystemErrorCode readError = 0;
    std::uint64_t readsUntilError = 0;
    // Called before each read with the number of earlier reads.
    std::function<void(unsigned readCount)> beforeRead;
    SystemErrorCode createError = 0;
    std::function<bool(const std::wstring& path)> createFails;  // absent: every one
    SystemErrorCode writeError = 0;
    std::function<bool(std::uint64_t offset)> writeFails;  // absent: every one
    SystemErrorCode truncateError = 0;
    SystemErrorCode syncError = 0;
    SystemErrorCode syncDirectoryError = 0;
    SystemErrorCode closeError = 0;
    // Called after each read with its result, 0 at the end of the file.
    std::function<void(std::size_t count)> afterRead;
    // Called before a file is created: another program may be faster.
    std::function<void(const std::wstring& path)> beforeCreate;

    unsigned openCount = 0;  // files open at this moment
    unsigned readCount = 0;
    unsigned writeCount = 0;
    unsigned truncateCount = 0;
    unsigned syncCount = 0;

    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override;
    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override;
    SystemErrorCode CreateExclusive(const std::wstring& path, FileHandle& handle) override;
    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override;
    SystemErrorCode Truncate(FileHandle handle, std::uint64_t size) override;
    SystemErrorCode SyncData(FileHandle handle) override;
    SystemErrorCode SyncDirectory(const std::wstring& path) override;
    SystemErrorCode Close(FileHandle handle) override;

  private:
    bool Interrupts();

    using Lock = std::lock_guard<std::recursive_mutex>;

    std::recursive_mutex mutex_;  // what a test has installed here may call back
    unsigned interruptions_ = 0;
};

}  // namespace stalwick::test
