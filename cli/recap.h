// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"

namespace stalwick {

// The summary of several recordings: a line of counts, then one for each that is not whole. Empty
// for a single one, and, if quiet, when all are whole.
[[nodiscard]] std::vector<std::wstring> DescribeAll(const std::vector<PlannedRecording>& recordings,
                                                    const std::vector<RecordingOutcome>& outcomes,
                                                    bool quiet);

}  // namespace stalwick
