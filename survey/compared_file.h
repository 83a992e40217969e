#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "survey/finding_log.h"
#include "survey/forward_reader.h"
#include "survey/output_set.h"

namespace stalwick {

// An output that is held against the records that it should have, one after another.
class ComparedFile {
  public:
    // Opens the output, whose header was read before.
    ComparedFile(const OutputInSet& output, FindingLog log);
    ComparedFile(const ComparedFile&) = delete;
    ComparedFile& operator=(const ComparedFile&) = delete;

    // The next record must be these bytes.
    void Compare(const void* record, std::size_t size);
    // There must be no more.
    void Finish();

  private:
    std::wstring Describe(std::size_t differing, const std::uint8_t* actual,
                          const std::uint8_t* expected) const;

    OutputName::Kind kind_;
    FindingLog log_;
    RecordFile file_;
    RecordFileError openError_;
    ForwardReader reader_;
    std::uint64_t record_ = 0;   // that comes next
    std::uint64_t missing_ = 0;  // records that the file is too short for
};

}  // namespace stalwick
