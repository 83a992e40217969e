// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"

namespace stalwick {

// The lines on standard error for a recording that has ended: its own line, then one for every
// further detail. Quiet leaves out notes, and gives no line for a whole recording.
[[nodiscard]] std::vector<std::wstring> DescribeRecording(const PlannedRecording& recording,
                                                          const RecordingOutcome& outcome,
                                                          bool quiet);

// How far a canceled conversion came: "after 3 min 20.0 s (34 %)".
[[nodiscard]] std::wstring DescribeHowFar(const ConversionAccount& account);

}  // namespace stalwick
