// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/record_file.h"

#include <algorithm>

#include "outputs/header_text.h"
#include "outputs/output_format.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

RecordFileError RecordFile::Error(RecordFileError::Kind kind, const std::wstring& why) const {
    return {kind, OneLine(path_) + L": " + OneLine(why)};
}

std::uint64_t RecordFile::RecordPosition(std::uint64_t record) const {
    return kOutputHeaderSize + record * recordSize_;
}

RecordFileError RecordFile::OpenHeader(const std::wstring& path, const Kind& kind) {
    *this = RecordFile();
    path_ = path;
    if (const SystemErrorCode code = file_.Open(path); code != 0) {
        return Error(RecordFileError::Kind::kUnreadable, SystemErrorText(code));
    }
    RecordFileError error = ReadHeader(kind);
    if (error) *this = RecordFile();
    return error;
}

RecordFileError RecordFile::ReadHeader(const Kind& kind) {
    if (const std::uint64_t size = file_.Size(); size < kOutputHeaderSize) {
        return Error(RecordFileError::Kind::kHeader, L"it ends after " + std::to_wstring(size) +
                                                         L" bytes, inside its header of " +
                                                         std::to_wstring(kOutputHeaderSize));
    }
    std::string block(kOutputHeaderSize, '\0');
    if (RecordFileError error = ReadBytes(0, block.data(), block.size())) return error;
    if (const std::wstring fault = header_.Read(block); !fault.empty()) {
        return Error(RecordFileError::Kind::kHeader, fault);
    }
    const std::wstring wanted = DataTypeName(static_cast<std::uint8_t>(kind.type));
    if (const std::wstring type = header_.Value(L"-FileType"); type != wanted) {
        return Error(RecordFileError::Kind::kWrongType,
                     L"its -FileType is " + type + L", not " + wanted);
    }
    if (header_.Number(L"-RecordSize") != kind.printedRecordSize) {
        return Error(RecordFileError::Kind::kHeader, L"its -RecordSize is " +
                                                         header_.Value(L"-RecordSize") + L", not " +
                                                         std::to_wstring(kind.printedRecordSize));
    }
    return {};
}

RecordFileError RecordFile::CountRecords(std::size_t recordSize) {
    const std::uint64_t size = file_.Size();
    if (size < kOutputHeaderSize) {
        return Error(RecordFileError::Kind::kUnreadable,
                     L"it was cut short while it was being read");
    }
    recordSize_ = recordSize;
    recordCount_ = (size - kOutputHeaderSize) / recordSize;
    cutBytes_ = (size - kOutputHeaderSize) % recordSize;
    if (cutBytes_ == 0) return {};
    return Error(RecordFileError::Kind::kCutRecord,
                 L"it ends inside record " + std::to_wstring(recordCount_) + L" at byte " +
                     std::to_wstring(RecordPosition(recordCount_)) + L": " +
                     std::to_wstring(cutBytes_) + L" of " + std::to_wstring(recordSize) +
                     L" bytes");
}

RecordFileError RecordFile::ReadRecordBytes(std::uint64_t first, std::uint64_t count,
                                            void* target) const {
    if (first > recordCount_ || count > recordCount_ - first) {
        return Error(RecordFileError::Kind::kUnreadable,
                     L"it has no record " + std::to_wstring(std::max(first, recordCount_)) +
                         L", only " + std::to_wstring(recordCount_));
    }
    return ReadBytes(RecordPosition(first), target, static_cast<std::size_t>(count) * recordSize_);
}

RecordFileError RecordFile::ReadBytes(std::uint64_t offset, void* target, std::size_t size) const {
    std::size_t count = 0;
    if (const SystemErrorCode code = file_.ReadAt(offset, target, size, count); code != 0) {
        return Error(RecordFileError::Kind::kUnreadable,
                     L"at byte " + std::to_wstring(offset + count) + L": " + SystemErrorText(code));
    }
    if (count == size) return {};
    return Error(RecordFileError::Kind::kUnreadable,
                 L"it was cut short while it was being read: it ends at byte " +
                     std::to_wstring(offset + count));
}

}  // namespace stalwick
