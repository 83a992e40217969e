#pragma once

#include <condition_variable>
#include <cstddef>
#include <limits>
#include <mutex>

#include "platform/file_calls.h"

namespace stalwick::test {

/**
 * The system's file calls, with a gate in front of every read: a conversion stops where a test
 * wants to look at the window. Open at first. In place from construction to destruction; any
 * thread may use it.
 */
class ReadGate final : public FileCalls {
  public:
    ReadGate() : before_(SetFileCalls(this)) {}
    ~ReadGate() override { SetFileCalls(before_); }

    // From now on so many reads pass; each later one waits.
    void Allow(std::size_t reads);
    void AllowAll() { Allow(std::numeric_limits<std::size_t>::max()); }

    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override {
        return System().OpenForReading(path, handle);
    }
    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override;
    SystemErrorCode QuerySize(FileHandle handle, std::uint64_t& size) override {
        return System().QuerySize(handle, size);
    }
    SystemErrorCode CreateExclusive(const std::wstring& path, FileHandle& handle) override {
        return System().CreateExclusive(path, handle);
    }
    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        return System().WriteAt(handle, offset, data, size, transferred);
    }
    SystemErrorCode StartWriteBack(FileHandle handle, std::uint64_t offset,
                                   std::uint64_t size) override {
        return System().StartWriteBack(handle, offset, size);
    }
    SystemErrorCode SyncData(FileHandle handle) override { return System().SyncData(handle); }
    SystemErrorCode Close(FileHandle handle) override { return System().Close(handle); }

  private:
    static FileCalls& System() { return SystemFileCalls(); }

    FileCalls* before_;
    std::mutex mutex_;
    std::condition_variable opened_;
    std::size_t readsLeft_ = std::numeric_limits<std::size_t>::max();
};

}  // namespace stalwick::test
