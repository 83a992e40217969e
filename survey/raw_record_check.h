// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

#include "survey/finding_log.h"
#include "survey/output_set.h"
#include "survey/time_steps.h"

namespace stalwick {

// The totals of the records of a raw data file.
struct RawTotals {
    std::uint64_t records = 0;
    std::uint64_t ttlChanges = 0;
};

// Checks every record of a raw data file. A record has as many samples as its packet had channels,
// 32 to 256, whatever the header announces: its checksum determines its length.
[[nodiscard]] RawTotals CheckRawRecords(const OutputInSet& output, const RecordFile& file,
                                        TimeSteps& steps, FindingLog& log);

}  // namespace stalwick
