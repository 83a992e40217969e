// SPDX-License-Identifier: BSD-3-Clause
#include "platform/output_file.h"

#include <algorithm>
#include <utility>

#include "platform/system_error.h"

namespace stalwick {

namespace {

// One call moves at most this much: enough to make the cost of the call negligible, little enough
// to stay in the cache while the kernel copies it.
constexpr std::size_t kLargestWrite = std::size_t{1} << 20U;

bool IsInterrupted(SystemErrorCode code) {
    return ClassifySystemError(code) == SystemErrorKind::kInterrupted;
}

// Repeats the call as long as a signal interrupts it.
template <typename Call>
SystemErrorCode RepeatIfInterrupted(const Call& call) {
    SystemErrorCode code = 0;
    do {
        code = call(CurrentFileCalls());
    } while (IsInterrupted(code));
    return code;
}

}  // namespace

OutputFile::~OutputFile() {
    Close();
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : handle_(std::exchange(other.handle_, kNoFile)) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    if (this != &other) {
        Close();
        handle_ = std::exchange(other.handle_, kNoFile);
    }
    return *this;
}

SystemErrorCode OutputFile::CreateExclusive(const std::wstring& path) {
    return RepeatIfInterrupted(
        [&](FileCalls& calls) { return calls.CreateExclusive(path, handle_); });
}

SystemErrorCode OutputFile::WriteAt(std::uint64_t offset, const void* data, std::size_t size,
                                    std::size_t* written) {
    const auto* bytes = static_cast<const std::byte*>(data);
    std::size_t ownCount = 0;
    std::size_t& done = written != nullptr ? *written : ownCount;
    done = 0;
    while (done < size) {
        std::size_t count = 0;
        const SystemErrorCode code = CurrentFileCalls().WriteAt(
            handle_, offset + done, bytes + done, std::min(size - done, kLargestWrite), count);
        if (IsInterrupted(code)) continue;
        if (code != 0) return code;
        // A write that writes nothing and gives no reason would be retried forever.
        if (count == 0) return SystemErrorFor(SystemErrorKind::kOther);
        done += count;
    }
    return 0;
}

SystemErrorCode OutputFile::Truncate(std::uint64_t size) {
    return RepeatIfInterrupted([&](FileCalls& calls) { return calls.Truncate(handle_, size); });
}

void OutputFile::StartWriteBack(std::uint64_t offset, std::uint64_t size) {
    CurrentFileCalls().StartWriteBack(handle_, offset, size);
}

SystemErrorCode OutputFile::SyncData() {
    return RepeatIfInterrupted([&](FileCalls& calls) { return calls.SyncData(handle_); });
}

bool OutputFile::IsRemoved() const {
    bool removed = false;
    return IsOpen() && CurrentFileCalls().QueryRemoved(handle_, removed) == 0 && removed;
}

SystemErrorCode SyncDirectory(const std::wstring& path) {
    return RepeatIfInterrupted([&](FileCalls& calls) { return calls.SyncDirectory(path); });
}

SystemErrorCode OutputFile::Close() {
    if (!IsOpen()) return 0;
    const SystemErrorCode code = CurrentFileCalls().Close(std::exchange(handle_, kNoFile));
    // An interrupted close has released the file; closing again could close another one.
    return IsInterrupted(code) ? 0 : code;
}

}  // namespace stalwick
