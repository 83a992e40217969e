// SPDX-License-Identifier: BSD-3-Clause
#include "platform/file_calls.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/text_encoding.h"

namespace stalwick {

namespace {

int Descriptor(FileHandle handle) {
    return static_cast<int>(handle);
}

// Some file systems, most of them network file systems, cannot sync a directory.
bool IsUnsupported(SystemErrorCode code) {
    return code == EINVAL || code == ENOTSUP || code == ENOSYS;
}

class PosixFileCalls final : public FileCalls {
  public:
    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override {
        const int descriptor = ::open(ToUtf8(path).c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0) return errno;
        struct stat status {};
        if (::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
            ::close(descriptor);
            return EISDIR;
        }
        handle = descriptor;
        return 0;
    }

    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override {
        const ssize_t count = ::read(Descriptor(handle), data, size);
        if (count < 0) return errno;
        transferred = static_cast<std::size_t>(count);
        return 0;
    }

    SystemErrorCode ReadAt(FileHandle handle, std::uint64_t offset, void* data, std::size_t size,
                           std::size_t& transferred) override {
        const ssize_t count = ::pread(Descriptor(handle), data, size, static_cast<off_t>(offset));
        if (count < 0) return errno;
        transferred = static_cast<std::size_t>(count);
        return 0;
    }

    SystemErrorCode QuerySize(FileHandle handle, std::uint64_t& size) override {
        struct stat status {};
        if (::fstat(Descriptor(handle), &status) != 0) return errno;
        size = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
        return 0;
    }

    SystemErrorCode CreateExclusive(const std::wstring& path, FileHandle& handle) override {
        constexpr mode_t kReadWriteForAll = 0666;  // minus the process's umask
        const int descriptor =
            ::open(ToUtf8(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadWriteForAll);
        if (descriptor < 0) return errno;
        handle = descriptor;
        return 0;
    }

    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        const ssize_t count = ::pwrite(Descriptor(handle), data, size, static_cast<off_t>(offset));
        if (count < 0) return errno;
        transferred = static_cast<std::size_t>(count);
        return 0;
    }

    SystemErrorCode StartWriteBack(FileHandle handle, std::uint64_t offset,
                                   std::uint64_t size) override {
#ifdef __linux__
        const int result = ::sync_file_range(Descriptor(handle), static_cast<off64_t>(offset),
                                             static_cast<off64_t>(size), SYNC_FILE_RANGE_WRITE);
        return result == 0 ? 0 : errno;
#else
        (void)handle, (void)offset, (void)size;
        return 0;
#endif
    }

    SystemErrorCode Truncate(FileHandle handle, std::uint64_t size) override {
        return ::ftruncate(Descriptor(handle), static_cast<off_t>(size)) == 0 ? 0 : errno;
    }

    SystemErrorCode SyncData(FileHandle handle) override {
        return ::fdatasync(Descriptor(handle)) == 0 ? 0 : errno;
    }

    SystemErrorCode SyncDirectory(const std::wstring& path) override {
        const int descriptor = ::open(ToUtf8(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        // A directory without read permission cannot be opened, and so cannot be synced.
        if (descriptor < 0) return errno == EACCES ? 0 : errno;
        const SystemErrorCode code = ::fsync(descriptor) == 0 ? 0 : errno;
        ::close(descriptor);
        return IsUnsupported(code) ? 0 : code;
    }

    SystemErrorCode QueryRemoved(FileHandle handle, bool& removed) override {
        struct stat status {};
        if (::fstat(Descriptor(handle), &status) != 0) return errno;
        removed = status.st_nlink == 0;
        return 0;
    }

    SystemErrorCode Close(FileHandle handle) override {
        return ::close(Descriptor(handle)) == 0 ? 0 : errno;
    }
};

}  // namespace

FileCalls& SystemFileCalls() {
    static PosixFileCalls calls;
    return calls;
}

}  // namespace stalwick
