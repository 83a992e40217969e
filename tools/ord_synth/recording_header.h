// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <string>

#include "tools/ord_synth/synth_options.h"

namespace stalwick {

inline constexpr std::size_t kSynthHeaderBytes = 16384;

// The header block of a recording: kSynthHeaderBytes of text and zeros.
std::string MakeRecordingHeader(const SynthOptions& options);

}  // namespace stalwick
