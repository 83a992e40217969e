// SPDX-License-Identifier: BSD-3-Clause
#include "platform/file_calls.h"

#include <algorithm>

#include "platform/windows/system_path.h"
#include "platform/windows/windows_api.h"

namespace stalwick {

namespace {

// The calls count bytes in 32 bits.
constexpr std::size_t kLargestTransfer = std::size_t{1} << 30U;

HANDLE Native(FileHandle handle) {
    return reinterpret_cast<HANDLE>(handle);
}

SystemErrorCode LastError() {
    return static_cast<SystemErrorCode>(::GetLastError());
}

SystemErrorCode ResultOf(BOOL succeeded) {
    return succeeded != FALSE ? 0 : LastError();
}

DWORD TransferSize(std::size_t size) {
    return static_cast<DWORD>(std::min(size, kLargestTransfer));
}

OVERLAPPED PositionAt(std::uint64_t offset) {
    constexpr unsigned kHalf = 32;
    OVERLAPPED position{};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> kHalf);
    return position;
}

SystemErrorCode Store(HANDLE opened, FileHandle& handle) {
    if (opened == INVALID_HANDLE_VALUE) return LastError();
    handle = reinterpret_cast<FileHandle>(opened);
    return 0;
}

bool IsDirectory(const std::wstring& systemPath) {
    const DWORD attributes = ::GetFileAttributesW(systemPath.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

class WindowsFileCalls final : public FileCalls {
  public:
    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override {
        const std::wstring systemPath = SystemPath(path);
        // The system's own error for a directory would be "Access denied".
        if (IsDirectory(systemPath)) return ERROR_DIRECTORY_NOT_SUPPORTED;
        constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        return Store(::CreateFileW(systemPath.c_str(), GENERIC_READ, kShareAll, nullptr,
                                   OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr),
                     handle);
    }

    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override {
        DWORD count = 0;
        const SystemErrorCode code =
            ResultOf(::ReadFile(Native(handle), data, TransferSize(size), &count, nullptr));
        transferred = count;
        // If the writer of a pipe is gone, the pipe has ended.
        return code == ERROR_BROKEN_PIPE || code == ERROR_HANDLE_EOF ? 0 : code;
    }

    SystemErrorCode ReadAt(FileHandle handle, std::uint64_t offset, void* data, std::size_t size,
                           std::size_t& transferred) override {
        OVERLAPPED position = PositionAt(offset);
        DWORD count = 0;
        const SystemErrorCode code =
            ResultOf(::ReadFile(Native(handle), data, TransferSize(size), &count, &position));
        transferred = count;
        return code == ERROR_HANDLE_EOF ? 0 : code;
    }

    SystemErrorCode QuerySize(FileHandle handle, std::uint64_t& size) override {
        size = 0;
        if (::GetFileType(Native(handle)) != FILE_TYPE_DISK) return 0;
        LARGE_INTEGER bytes{};
        const SystemErrorCode code = ResultOf(::GetFileSizeEx(Native(handle), &bytes));
        if (code == 0) size = static_cast<std::uint64_t>(bytes.QuadPart);
        return code;
    }

    SystemErrorCode CreateExclusive(const std::wstring& path, FileHandle& handle) override {
        return Store(::CreateFileW(SystemPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                   nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr),
                     handle);
    }

    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        OVERLAPPED position = PositionAt(offset);
        DWORD count = 0;
        const SystemErrorCode code =
            ResultOf(::WriteFile(Native(handle), data, TransferSize(size), &count, &position));
        transferred = count;
        return code;
    }

    // The system has no such request; its own lazy writer starts within a second.
    SystemErrorCode StartWriteBack(FileHandle, std::uint64_t, std::uint64_t) override { return 0; }

    SystemErrorCode Truncate(FileHandle handle, std::uint64_t size) override {
        FILE_END_OF_FILE_INFO end{};
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
        return ResultOf(
            ::SetFileInformationByHandle(Native(handle), FileEndOfFileInfo, &end, sizeof end));
    }

    SystemErrorCode SyncData(FileHandle handle) override {
        return ResultOf(::FlushFileBuffers(Native(handle)));
    }

    // NTFS keeps names in its journal, and flushing a directory needs an administrator's rights.
    SystemErrorCode SyncDirectory(const std::wstring& /*path*/) override { return 0; }

    SystemErrorCode Close(FileHandle handle) override {
        return ResultOf(::CloseHandle(Native(handle)));
    }
};

}  // namespace

FileCalls& SystemFileCalls() {
    static WindowsFileCalls calls;
    return calls;
}

}  // namespace stalwick
