#pragma once

#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"
#include "engine/data_processor.h"

namespace stalwick {

// Looks at a recording in its turn, before anything is made for it. False, with the outcome, if it
// cannot be converted, or if the command line says to pass over what is converted already and it
// is. A cancel through the processor ends that long look, and the recording is left alone.
[[nodiscard]] bool NeedsConversion(const PlannedRecording& recording,
                                   const CommandLine& commandLine, DataProcessor& processor,
                                   RecordingOutcome& outcome);

// Whether any of the recordings can be converted, as far as a look says.
[[nodiscard]] bool AnyCanBeConverted(const std::vector<PlannedRecording>& recordings);

}  // namespace stalwick
