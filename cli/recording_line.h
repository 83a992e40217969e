#pragma once

#include <string>
#include <vector>

#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"

namespace stalwick {

// What is said of a recording that has ended: a line of its own, then one for every further detail.
// Quiet leaves out notes, and says nothing of one that is whole.
[[nodiscard]] std::vector<std::wstring> DescribeRecording(const PlannedRecording& recording,
                                                          const RecordingOutcome& outcome,
                                                          bool quiet);

// How far a canceled conversion came: "after 3 min 20.0 s (34 %)".
[[nodiscard]] std::wstring DescribeHowFar(const ConversionAccount& account);

}  // namespace stalwick
