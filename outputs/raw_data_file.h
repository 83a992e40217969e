// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "outputs/record_file.h"

namespace stalwick {

// Reads a raw data file (.vrd), docs/output-files.md. Assumes that every record has as many samples
// as the header has A/D channels. Packets that carry another number of channels leave records of
// another length: such a file most likely ends inside a record, and start markers are missing.
class RawDataFile : public RecordFile {
  public:
    // After kCutRecord the file is open nevertheless; after any other error it is not.
    [[nodiscard]] RecordFileError Open(const std::wstring& path);

    [[nodiscard]] std::uint32_t ADChannelCount() const { return adChannelCount_; }
    std::size_t RecordWords() const { return RecordSize() / sizeof(std::uint32_t); }

    // Fills `words` with whole records from `first` on, counted from 0. All of them must exist, and
    // the size of `words` must be a multiple of RecordWords(). RawRecordView reads one record.
    [[nodiscard]] RecordFileError ReadRecords(std::uint64_t first,
                                              std::span<std::uint32_t> words) const;

  private:
    std::uint32_t adChannelCount_ = 0;
};

}  // namespace stalwick
