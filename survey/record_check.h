// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

#include "survey/finding_log.h"
#include "survey/output_set.h"
#include "survey/time_steps.h"

namespace stalwick {

// The totals of the records of a channel file.
struct ChannelTotals {
    std::uint64_t records = 0;
    std::uint64_t samples = 0;
    std::uint64_t timesDigest = 0;  // equal for equal times
};

struct ChannelCheckContext {
    TimeSteps& steps;
    FindingLog& log;
    bool mayEndEarly = false;  // records at which a conversion skipped damage
};

// Checks every whole record of a channel file.
[[nodiscard]] ChannelTotals CheckChannelRecords(const OutputInSet& output, const RecordFile& file,
                                                const ChannelCheckContext& context);

// Checks every whole record of an event file.
void CheckEventRecords(const RecordFile& file, TimeSteps& steps, FindingLog& log);

}  // namespace stalwick
