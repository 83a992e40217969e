// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "platform/file_calls.h"

namespace stalwick::test {

/**
 * The system's file calls, in place from construction to destruction. A test double overrides the
 * calls that it changes.
 */
class ForwardingFileCalls : public FileCalls {
  public:
    ForwardingFileCalls() : before_(SetFileCalls(this)) {}
    ~ForwardingFileCalls() override { SetFileCalls(before_); }
    ForwardingFileCalls(const ForwardingFileCalls&) = delete;
    ForwardingFileCalls& operator=(const ForwardingFileCalls&) = delete;

    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override {
        return SystemFileCalls().OpenForReading(path, handle);
    }
    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override {
        return SystemFileCalls().Read(handle, data, size, transferred);
    }
    SystemErrorCode ReadAt(FileHandle handle, std::uint64_t offset, void* data, std::size_t size,
                           std::size_t& transferred) override {
        return SystemFileCalls().ReadAt(handle, offset, data, size, transferred);
    }
    SystemErrorCode QuerySize(FileHandle handle, std::uint64_t& size) override {
        return SystemFileCalls().QuerySize(handle, size);
    }
    SystemErrorCode CreateExclusive(const std::wstring& path, FileHandle& handle) override {
        return SystemFileCalls().CreateExclusive(path, handle);
    }
    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        return SystemFileCalls().WriteAt(handle, offset, data, size, transferred);
    }
    SystemErrorCode StartWriteBack(FileHandle handle, std::uint64_t offset,
                                   std::uint64_t size) override {
        return SystemFileCalls().StartWriteBack(handle, offset, size);
    }
    SystemErrorCode Truncate(FileHandle handle, std::uint64_t size) override {
        return SystemFileCalls().Truncate(handle, size);
    }
    SystemErrorCode SyncData(FileHandle handle) override {
        return SystemFileCalls().SyncData(handle);
    }
    SystemErrorCode SyncDirectory(const std::wstring& path) override {
        return SystemFileCalls().SyncDirectory(path);
    }
    SystemErrorCode QueryRemoved(FileHandle handle, bool& removed) override {
        return SystemFileCalls().QueryRemoved(handle, removed);
    }
    SystemErrorCode Close(FileHandle handle) override { return SystemFileCalls().Close(handle); }

  private:
    FileCalls* before_;
};

}  // namespace stalwick::test
