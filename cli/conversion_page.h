#pragma once

#include <atomic>
#include <cstdint>

#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"

namespace stalwick {

// Writes the page of a recording that was converted beside its outputs; why there is none becomes
// a detail of the outcome. One that was passed over keeps the page that it has. It reads the
// recording again, and ends early, without a page, where `cancel` is set.
void AddPage(const PlannedRecording& recording, const std::atomic<std::uint8_t>& cancel,
             RecordingOutcome& outcome);

}  // namespace stalwick
