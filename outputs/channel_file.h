// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "outputs/record_file.h"

namespace stalwick {

// Reads a channel file (.vcs), docs/output-files.md.
class ChannelFile : public RecordFile {
  public:
    // After kCutRecord the file is open nevertheless; after any other error it is not.
    [[nodiscard]] RecordFileError Open(const std::wstring& path);

    // Fills `records` with those from `first` on, counted from 0. All of them must exist.
    [[nodiscard]] RecordFileError ReadRecords(std::uint64_t first,
                                              std::span<VtxDataTypes::CRRec> records) const;
};

}  // namespace stalwick
