// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "survey/finding_log.h"
#include "survey/forward_reader.h"
#include "survey/output_set.h"

namespace stalwick {

// Compares an output with the records that it should have, one after another.
class ComparedFile {
  public:
    // Opens the output, whose header was read before.
    ComparedFile(const OutputInSet& output, FindingLog log);
    ComparedFile(const ComparedFile&) = delete;
    ComparedFile& operator=(const ComparedFile&) = delete;

    // The next record must be these bytes.
    void Compare(const void* record, std::size_t size);
    // No more records may follow.
    void Finish();

  private:
    std::wstring Describe(std::size_t differing, const std::uint8_t* actual,
                          const std::uint8_t* expected) const;

    OutputName::Kind kind_;
    FindingLog log_;
    RecordFile file_;
    RecordFileError openError_;
    ForwardReader reader_;
    std::uint64_t record_ = 0;   // the next one
    std::uint64_t missing_ = 0;  // records missing because the file is too short
};

}  // namespace stalwick
