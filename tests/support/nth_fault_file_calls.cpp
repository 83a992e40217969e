// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/nth_fault_file_calls.h"

namespace stalwick::test {

namespace {
constexpr std::uint64_t kHeaderBytes = 16384;
}  // namespace

NthFaultFileCalls::Outcome NthFaultFileCalls::Count(const FileCallRecord& call) {
    const std::uint64_t number = calls_.size();
    calls_.push_back(call);
    const std::uint64_t first = fault_.halfFirst ? fault_.nth + 1 : fault_.nth;
    const bool half = number == fault_.nth && (fault_.halfFirst || fault_.code == 0);
    const bool hit = number == first || (fault_.lasting && number > first);
    if (half) {
        met_ = true;
        return Outcome::kHalf;
    }
    if (!hit || fault_.code == 0 || fault_.nth == UINT64_MAX) return Outcome::kDone;
    met_ = true;
    failedCalls_.push_back(call);
    return Outcome::kFailed;
}

SystemErrorCode NthFaultFileCalls::OpenForReading(const std::wstring& path, FileHandle& handle) {
    const std::scoped_lock lock(mutex_);
    if (Count({FileOperation::kOpenForReading, path}) == Outcome::kFailed) return fault_.code;
    const SystemErrorCode code = SystemFileCalls().OpenForReading(path, handle);
    if (code == 0) open_[handle] = {path, 0};
    return code;
}

SystemErrorCode NthFaultFileCalls::Read(FileHandle handle, void* data, std::size_t size,
                                        std::size_t& transferred) {
    const std::scoped_lock lock(mutex_);
    OpenFile& file = open_.at(handle);
    const Outcome outcome = Count({FileOperation::kRead, file.path, file.position, size});
    if (outcome == Outcome::kFailed) return fault_.code;
    if (outcome == Outcome::kHalf) size = (size + 1) / 2;
    const SystemErrorCode code = SystemFileCalls().Read(handle, data, size, transferred);
    if (code == 0) file.position += transferred;
    return code;
}

SystemErrorCode NthFaultFileCalls::QuerySize(FileHandle handle, std::uint64_t& size) {
    const std::scoped_lock lock(mutex_);
    const Outcome outcome = Count({FileOperation::kQuerySize, open_.at(handle).path});
    return outcome == Outcome::kFailed ? fault_.code : SystemFileCalls().QuerySize(handle, size);
}

SystemErrorCode NthFaultFileCalls::CreateExclusive(const std::wstring& path, FileHandle& handle) {
    const std::scoped_lock lock(mutex_);
    if (Count({FileOperation::kCreate, path}) == Outcome::kFailed) return fault_.code;
    const SystemErrorCode code = SystemFileCalls().CreateExclusive(path, handle);
    if (code == 0) open_[handle] = {path, 0};
    return code;
}

SystemErrorCode NthFaultFileCalls::WriteAt(FileHandle handle, std::uint64_t offset,
                                           const void* data, std::size_t size,
                                           std::size_t& transferred) {
    const std::scoped_lock lock(mutex_);
    const std::wstring& path = open_.at(handle).path;
    const bool toFreshHeader = offset < kHeaderBytes && !withHeader_.contains(path);
    const Outcome outcome = Count({FileOperation::kWrite, path, offset, size, toFreshHeader});
    if (outcome == Outcome::kFailed) return fault_.code;
    if (outcome == Outcome::kHalf) size = (size + 1) / 2;
    const SystemErrorCode code = SystemFileCalls().WriteAt(handle, offset, data, size, transferred);
    if (code == 0 && offset + transferred == kHeaderBytes) withHeader_.insert(path);
    return code;
}

// Only a hint: nobody would notice its failure, so it is not counted.
SystemErrorCode NthFaultFileCalls::StartWriteBack(FileHandle /*handle*/, std::uint64_t /*offset*/,
                                                  std::uint64_t /*size*/) {
    return 0;
}

SystemErrorCode NthFaultFileCalls::Truncate(FileHandle handle, std::uint64_t size) {
    const std::scoped_lock lock(mutex_);
    const Outcome outcome = Count({FileOperation::kTruncate, open_.at(handle).path, size});
    return outcome == Outcome::kFailed ? fault_.code : SystemFileCalls().Truncate(handle, size);
}

SystemErrorCode NthFaultFileCalls::SyncData(FileHandle handle) {
    const std::scoped_lock lock(mutex_);
    const Outcome outcome = Count({FileOperation::kSync, open_.at(handle).path});
    return outcome == Outcome::kFailed ? fault_.code : 0;
}

SystemErrorCode NthFaultFileCalls::SyncDirectory(const std::wstring& path) {
    const std::scoped_lock lock(mutex_);
    return Count({FileOperation::kSyncDirectory, path}) == Outcome::kFailed ? fault_.code : 0;
}

SystemErrorCode NthFaultFileCalls::Close(FileHandle handle) {
    const std::scoped_lock lock(mutex_);
    const Outcome outcome = Count({FileOperation::kClose, open_.at(handle).path});
    open_.erase(handle);
    // The system releases the file even if its close fails.
    const SystemErrorCode code = SystemFileCalls().Close(handle);
    return outcome == Outcome::kFailed ? fault_.code : code;
}

}  // namespace stalwick::test
