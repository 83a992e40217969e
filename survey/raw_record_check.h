#pragma once

#include <cstdint>

#include "survey/finding_log.h"
#include "survey/output_set.h"
#include "survey/time_steps.h"

namespace stalwick {

// What the records of a raw data file come to.
struct RawTotals {
    std::uint64_t records = 0;
    std::uint64_t ttlChanges = 0;
};

// Looks at every record of a raw data file. A record has as many samples as its packet had
// channels, 32 to 256, whatever the header announces: its checksum says how long it is.
[[nodiscard]] RawTotals CheckRawRecords(const OutputInSet& output, const RecordFile& file,
                                        TimeSteps& steps, FindingLog& log);

}  // namespace stalwick
