// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <cstdint>

#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"

namespace stalwick {

// Writes the page of a converted recording next to its outputs; the reason for a missing page
// becomes a detail of the outcome. A skipped recording keeps its page. Reads the recording again,
// and ends early, without a page, if `cancel` is set.
void AddPage(const PlannedRecording& recording, const std::atomic<std::uint8_t>& cancel,
             RecordingOutcome& outcome);

}  // namespace stalwick
