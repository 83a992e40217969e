// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

#include "survey/sample_block.h"

namespace stalwick {

// Adds the first of this many slots of kBlockPackets packets with vector instructions, and returns
// how many; sets anyAtRangeEnd for these.
using SlotKernel = std::size_t (*)(const std::int16_t* const* packets, std::size_t slots,
                                   SlotSums& sums);

// The fastest that this machine can run; null if there is none.
[[nodiscard]] SlotKernel BestSlotKernel();

}  // namespace stalwick
