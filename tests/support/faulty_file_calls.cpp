// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/faulty_file_calls.h"

#include <algorithm>

#include "platform/system_error.h"

namespace stalwick::test {

namespace {
constexpr std::uint64_t kHeaderBytes = 16384;
}  // namespace

bool FaultyFileCalls::Interrupts() {
    if (interruptions_ >= interruptionsPerCall) {
        interruptions_ = 0;
        return false;
    }
    ++interruptions_;
    return true;
}

SystemErrorCode FaultyFileCalls::OpenForReading(const std::wstring& path, FileHandle& handle) {
    const Lock lock(mutex_);
    const SystemErrorCode code = SystemFileCalls().OpenForReading(path, handle);
    if (code == 0) ++openCount;
    return code;
}

SystemErrorCode FaultyFileCalls::Read(FileHandle handle, void* data, std::size_t size,
                                      std::size_t& transferred) {
    const Lock lock(mutex_);
    if (Interrupts()) return SystemErrorFor(SystemErrorKind::kInterrupted);
    if (beforeRead) beforeRead(readCount);
    ++readCount;
    if (readError != 0) {
        if (readsUntilError == 0) return readError;
        --readsUntilError;
    }
    const SystemErrorCode code =
        SystemFileCalls().Read(handle, data, std::min(size, mostBytesPerCall), transferred);
    if (code == 0 && afterRead) afterRead(transferred);
    return code;
}

SystemErrorCode FaultyFileCalls::CreateExclusive(const std::wstring& path, FileHandle& handle) {
    const Lock lock(mutex_);
    if (Interrupts()) return SystemErrorFor(SystemErrorKind::kInterrupted);
    if (beforeCreate) beforeCreate(path);
    if (createError != 0 && (!createFails || createFails(path))) return createError;
    const SystemErrorCode code = SystemFileCalls().CreateExclusive(path, handle);
    if (code == 0) ++openCount;
    return code;
}

SystemErrorCode FaultyFileCalls::WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                                         std::size_t size, std::size_t& transferred) {
    const Lock lock(mutex_);
    if (Interrupts()) return SystemErrorFor(SystemErrorKind::kInterrupted);
    ++writeCount;
    if (writeError != 0 && (!writeFails || writeFails(offset))) return writeError;
    std::size_t taken = std::min(size, mostBytesPerCall);
    if (bytesUntilFull && offset >= kHeaderBytes) {
        if (*bytesUntilFull == 0) return SystemErrorFor(SystemErrorKind::kNoSpace);
        taken = static_cast<std::size_t>(std::min<std::uint64_t>(taken, *bytesUntilFull));
        *bytesUntilFull -= taken;
    }
    return SystemFileCalls().WriteAt(handle, offset, data, taken, transferred);
}

SystemErrorCode FaultyFileCalls::Truncate(FileHandle handle, std::uint64_t size) {
    const Lock lock(mutex_);
    if (Interrupts()) return SystemErrorFor(SystemErrorKind::kInterrupted);
    ++truncateCount;
    return truncateError != 0 ? truncateError : SystemFileCalls().Truncate(handle, size);
}

SystemErrorCode FaultyFileCalls::SyncData(FileHandle handle) {
    const Lock lock(mutex_);
    if (Interrupts()) return SystemErrorFor(SystemErrorKind::kInterrupted);
    ++syncCount;
    return syncError != 0 ? syncError : SystemFileCalls().SyncData(handle);
}

SystemErrorCode FaultyFileCalls::SyncDirectory(const std::wstring& path) {
    const Lock lock(mutex_);
    if (Interrupts()) return SystemErrorFor(SystemErrorKind::kInterrupted);
    return syncDirectoryError != 0 ? syncDirectoryError : SystemFileCalls().SyncDirectory(path);
}

SystemErrorCode FaultyFileCalls::Close(FileHandle handle) {
    const Lock lock(mutex_);
    --openCount;
    const SystemErrorCode code = SystemFileCalls().Close(handle);
    return closeError != 0 ? closeError : code;
}

}  // namespace stalwick::test
