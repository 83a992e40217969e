// SPDX-License-Identifier: BSD-3-Clause
#include "writers/data_file.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/file_system.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

// Files grow in parallel: with smaller pieces, each would have more fragments on the disk
// (docs/performance.md).
constexpr std::uint64_t kWriteBackBytes = std::uint64_t{1} << 20U;

const wchar_t* AdviceFor(SystemErrorKind kind) {
    switch (kind) {
        case SystemErrorKind::kNoSpace:
            return L"free some space or choose another directory";
        case SystemErrorKind::kTooManyOpenFiles:
            return L"raise the limit of open files";
        case SystemErrorKind::kAccessDenied:
            return L"choose a directory that you may write to";
        case SystemErrorKind::kAlreadyExists:
            return L"move away whatever has that name";
        case SystemErrorKind::kNotFound:
            return L"check that the output directory still exists";
        case SystemErrorKind::kFileTooLarge:
            return L"choose a disk that takes larger files, or raise the limit of their size";
        case SystemErrorKind::kNameTooLong:
            return L"choose an output directory with a shorter path, or shorten the recording's "
                   L"name";
        default:
            return L"check the disk and convert again";
    }
}

}  // namespace

OutputFailure MakeFailure(std::wstring_view action, SystemErrorCode code) {
    return {std::wstring(action), SystemErrorText(code), AdviceFor(ClassifySystemError(code))};
}

std::wstring DescribeFailure(const OutputFailure& failure, const std::wstring& path) {
    return L"cannot " + failure.action + L" " + OneLine(path) + L": " + failure.reason + L"; " +
           failure.advice;
}

std::wstring DescribeFailure(std::wstring_view action, const std::wstring& path,
                             SystemErrorCode code) {
    return DescribeFailure(MakeFailure(action, code), path);
}

bool WasNameTaken(SystemErrorCode code, const std::wstring& path) {
    return ClassifySystemError(code) == SystemErrorKind::kAlreadyExists &&
           QueryPath(path) == PathKind::kFile;
}

DataFile::~DataFile() {
    CompleteAppends();
}

bool DataFile::CompleteAppends() const {
    if (pool_ != nullptr) pool_->WaitFor(*this);
    return !Failed();
}

OutputFileState DataFile::State() const {
    const bool succeeded = CompleteAppends();
    OutputFileState state{path_, created_, headers_, dataSize_, std::nullopt};
    if (!succeeded) {
        state.failure =
            failedAction_ != nullptr ? MakeFailure(failedAction_, failedCode_) : refusal_;
    }
    return state;
}

bool DataFile::Refuse(const OutputFailure& failure) {
    if (Failed()) return false;
    refusal_ = failure;
    failed_.store(true, std::memory_order_release);
    return false;
}

bool DataFile::Check(SystemErrorCode code, const wchar_t* action) noexcept {
    if (code == 0) return true;
    if (Failed()) return false;
    failedAction_ = action;
    failedCode_ = code;
    failed_.store(true, std::memory_order_release);
    return false;
}

SystemErrorCode DataFile::Create(const std::wstring& path) {
    path_ = path;
    const SystemErrorCode code = file_.CreateExclusive(path);
    created_ = Check(code, L"create");
    return code;
}

bool DataFile::SetHeader(std::string_view text, std::size_t mostBytes) {
    if (!CompleteAppends()) return false;
    if (text.size() > mostBytes) {
        return Refuse({L"write the header of",
                       L"its text has " + std::to_wstring(text.size()) + L" bytes, " +
                           std::to_wstring(mostBytes) + L" fit",
                       L"shorten the path or the recording's header fields"});
    }
    if (!Sync()) return false;
    std::vector<char> block(kOutputHeaderSize);
    std::memcpy(block.data(), text.data(), text.size());
    if (!Check(file_.WriteAt(0, block.data(), block.size()), L"write")) return false;
    ++headers_;
    return true;
}

bool DataFile::Sync() {
    if (Failed()) return false;
    if (!hasUnsyncedData_ || !settings_.syncBeforeFinalHeader) return true;
    if (!Check(file_.SyncData(), L"write")) return false;
    hasUnsyncedData_ = false;
    return true;
}

bool DataFile::Append(const void* data, std::size_t size) {
    CompleteAppends();
    PerformAppend(data, size);
    return !Failed();
}

bool DataFile::Submit(std::byte* block, std::size_t size) {
    pool_->Submit(*this, block, size);
    return !Failed();
}

void DataFile::PerformAppend(const void* data, std::size_t size) noexcept {
    if (Failed() || size == 0) return;
    const std::uint64_t offset = kOutputHeaderSize + dataSize_;
    std::size_t written = 0;
    const SystemErrorCode code = file_.WriteAt(offset, data, size, &written);
    dataSize_ += written;
    if (!Check(code, L"write")) return;
    hasUnsyncedData_ = true;
    // The disk starts writing now, so that the wait before the final header is short.
    if (!settings_.syncBeforeFinalHeader || dataSize_ - writeBackEnd_ < kWriteBackBytes) return;
    file_.StartWriteBack(kOutputHeaderSize + writeBackEnd_, dataSize_ - writeBackEnd_);
    writeBackEnd_ = dataSize_;
}

bool DataFile::CutTo(std::uint64_t dataSize) {
    if (!CompleteAppends()) return false;
    if (dataSize >= dataSize_) return true;
    if (!Check(file_.Truncate(kOutputHeaderSize + dataSize), L"shorten")) return false;
    dataSize_ = dataSize;
    writeBackEnd_ = std::min(writeBackEnd_, dataSize);
    return true;
}

OutputTotals DataFile::Totals() const {
    CompleteAppends();
    return {created_ ? 1U : 0U, (headers_ > 0 ? kOutputHeaderSize : 0) + dataSize_};
}

bool DataFile::Close() {
    CompleteAppends();
    if (file_.IsRemoved()) {
        Refuse({L"keep", L"removed during the conversion", L"convert the recording again"});
        created_ = false;  // nobody could find the file
    }
    const bool closed = Check(file_.Close(), L"close");
    return closed && !Failed();
}

}  // namespace stalwick
