// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "outputs/output_header.h"
#include "outputs/vtx_data_types.h"
#include "platform/input_file.h"

namespace stalwick {

// Why an output file, or a part of it, cannot be read; false if it can.
struct [[nodiscard]] RecordFileError {
    enum class Kind {
        kNone,
        kUnreadable,  // the system's reason; or there is no such record
        kHeader,      // the header block is truncated or damaged
        kWrongType,   // the header is that of another kind of output
        kCutRecord    // the file ends inside a record; the whole ones can be read
    };
    Kind kind = Kind::kNone;
    std::wstring text;  // one line: which file, where, why

    explicit operator bool() const { return kind != Kind::kNone; }
};

// A finished output file, opened for reading: its header, followed by records of one size. Movable,
// not copyable; closes itself. Used by one thread. ChannelFile, EventFile and RawDataFile can open
// one.
class RecordFile {
  public:
    // All of these are empty until a file is open.
    const std::wstring& Path() const { return path_; }
    const OutputHeader& Header() const { return header_; }
    [[nodiscard]] bool IsClosed() const { return header_.SaysClosed(); }

    std::size_t RecordSize() const { return recordSize_; }                    // bytes
    [[nodiscard]] std::uint64_t RecordCount() const { return recordCount_; }  // whole records
    // Bytes after the last whole record.
    [[nodiscard]] std::uint64_t CutBytes() const { return cutBytes_; }
    // The position of a record in the file.
    [[nodiscard]] std::uint64_t RecordPosition(std::uint64_t record) const;
    // Bytes of the file, its header included.
    [[nodiscard]] std::uint64_t Size() const { return file_.Size(); }

    // Fills `target` with bytes of the file, including those of a truncated record. All must exist.
    [[nodiscard]] RecordFileError ReadBytes(std::uint64_t offset, void* target,
                                            std::size_t size) const;

  protected:
    // What the header of this kind of output contains.
    struct Kind {
        VtxDataTypes::VtxDataType type;
        std::uint32_t printedRecordSize;  // bytes
    };

    RecordFileError OpenHeader(const std::wstring& path, const Kind& kind);
    // Counts the records of a file whose header has been read.
    RecordFileError CountRecords(std::size_t recordSize);
    RecordFileError ReadRecordBytes(std::uint64_t first, std::uint64_t count, void* target) const;
    RecordFileError Error(RecordFileError::Kind kind, const std::wstring& why) const;

  private:
    RecordFileError ReadHeader(const Kind& kind);

    std::wstring path_;
    InputFile file_;
    OutputHeader header_;
    std::size_t recordSize_ = 0;
    std::uint64_t recordCount_ = 0;
    std::uint64_t cutBytes_ = 0;
};

}  // namespace stalwick
