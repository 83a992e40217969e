// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "tests/support/forwarding_file_calls.h"

namespace stalwick::test {

enum class FileOperation {
    kOpenForReading,
    kRead,
    kQuerySize,
    kCreate,
    kWrite,
    kTruncate,
    kSync,
    kSyncDirectory,
    kClose
};

/** One call as requested. */
struct FileCallRecord {
    FileOperation operation{};
    std::wstring path;
    std::uint64_t offset = 0;  // of a read or a write
    std::uint64_t size = 0;
    bool toFreshHeader = false;  // a write into the header block before it was ever complete
};

/** What happens to the n-th call, counted from 0, and perhaps to all later ones. */
struct FileFault {
    std::uint64_t nth = UINT64_MAX;
    SystemErrorCode code = 0;  // 0: the call does half of its work
    bool lasting = false;      // all later calls fail too
    bool halfFirst = false;    // the n-th does half, the next one fails
};

/**
 * The system's file calls, counted, with a fault in one of them. Nothing waits for the disk. In
 * place from construction to destruction; may be used by several threads.
 */
class NthFaultFileCalls final : public ForwardingFileCalls {
  public:
    explicit NthFaultFileCalls(const FileFault& fault) : fault_(fault) {}

    std::uint64_t callCount() const { return calls_.size(); }
    const std::vector<FileCallRecord>& calls() const { return calls_; }
    /** The calls that failed, in order. */
    const std::vector<FileCallRecord>& failedCalls() const { return failedCalls_; }
    /** A call did less than requested, or failed. */
    bool met() const { return met_; }
    std::size_t openCount() const { return open_.size(); }

    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override;
    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
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
    SystemErrorCode Close(FileHandle handle) override;

  private:
    struct OpenFile {
        std::wstring path;
        std::uint64_t position = 0;  // of the next read
    };
    enum class Outcome { kDone, kHalf, kFailed };

    Outcome Count(const FileCallRecord& call);

    FileFault fault_;
    std::mutex mutex_;
    std::vector<FileCallRecord> calls_;
    std::vector<FileCallRecord> failedCalls_;
    std::unordered_map<FileHandle, OpenFile> open_;
    std::set<std::wstring> withHeader_;  // files whose first header is whole
    bool met_ = false;
};

}  // namespace stalwick::test
