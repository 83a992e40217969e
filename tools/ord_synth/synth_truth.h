#pragma once

#include <string>

#include "tools/ord_synth/recording_synth.h"
#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// What a made recording lacks and where it was damaged, as a JSON document: `gaps` with
// `first_lost_packet`, `at_seconds` and `missing_samples` a channel; `damage` with `kind`,
// `position` in the undamaged file and `bytes`; `repeated_timestamps`.
[[nodiscard]] std::string DescribeTruth(const SynthOptions& options, const SynthSummary& summary);

}  // namespace stalwick
