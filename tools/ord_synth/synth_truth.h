// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "tools/ord_synth/recording_synth.h"
#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// The losses and damage of a synthetic recording as a JSON document: `gaps` with
// `first_lost_packet`, `at_seconds` and `missing_samples` per channel; `damage` with `kind`,
// `position` in the undamaged file and `bytes`; `repeated_timestamps`.
[[nodiscard]] std::string DescribeTruth(const SynthOptions& options, const SynthSummary& summary);

}  // namespace stalwick
