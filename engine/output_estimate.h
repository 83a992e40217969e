// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

#include "engine/wanted_outputs.h"

namespace stalwick {

// The approximate size in bytes of the wanted outputs of a recording, as if all of it were like its
// first packets. 0 if that is unknown: a pipe, or not a recording.
[[nodiscard]] std::uint64_t EstimateOutputBytes(const std::wstring& recordingPath,
                                                const WantedOutputs& wanted);

}  // namespace stalwick
