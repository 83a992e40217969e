#pragma once

#include <cstdint>
#include <string>

#include "engine/wanted_outputs.h"

namespace stalwick {

// About how many bytes the wanted outputs of a recording will have, as if all of it were like its
// first packets. 0 where that is not known: a pipe, or no recording.
[[nodiscard]] std::uint64_t EstimateOutputBytes(const std::wstring& recordingPath,
                                                const WantedOutputs& wanted);

}  // namespace stalwick
