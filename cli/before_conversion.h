// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"
#include "engine/data_processor.h"

namespace stalwick {

// Checks a recording when its turn comes, before anything is created for it. Returns false, with
// the outcome, if it cannot be converted, or if it is already converted and the command line says
// to skip those. A cancel through the processor ends that long check, and the recording is left
// alone.
[[nodiscard]] bool NeedsConversion(const PlannedRecording& recording,
                                   const CommandLine& commandLine, DataProcessor& processor,
                                   RecordingOutcome& outcome);

// Whether any of the recordings can be converted, as far as the check can tell.
[[nodiscard]] bool AnyCanBeConverted(const std::vector<PlannedRecording>& recordings);

}  // namespace stalwick
