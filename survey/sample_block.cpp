// SPDX-License-Identifier: BSD-3-Clause
#include "survey/sample_block.h"

#include <algorithm>

#include "survey/slot_kernel.h"

namespace stalwick {

namespace {

// The slots from `first` on, one by one.
void AddSlots(std::span<const std::int16_t* const> packets, std::size_t first, std::size_t slots,
              SlotSums& sums) {
    for (std::size_t slot = first; slot < slots; ++slot) {
        bool atEnd = false;
        bool threeAlike = false;
        for (const std::int16_t* const packet : packets) {
            const std::int16_t value = packet[slot];
            const int narrow = value >> kSampleShift;
            sums.smallest[slot] = std::min(sums.smallest[slot], value);
            sums.largest[slot] = std::max(sums.largest[slot], value);
            sums.sum[slot] += value;
            sums.sumOfSquares[slot] += static_cast<std::uint32_t>(narrow * narrow);
            atEnd = atEnd || value == kRangeStart || value == kRangeEnd;
            threeAlike = threeAlike || (slot + 2 < slots && value == packet[slot + 1] &&
                                        value == packet[slot + 2]);
        }
        sums.atRangeEnd[slot] = atEnd ? 1 : 0;
        sums.threeAlike[slot] = threeAlike ? 1 : 0;
        sums.anyAtRangeEnd = sums.anyAtRangeEnd || atEnd;
    }
}

}  // namespace

void SlotSums::Clear() {
    smallest.fill(INT16_MAX);
    largest.fill(INT16_MIN);
    sum.fill(0);
    sumOfSquares.fill(0);
}

void AddPackets(std::span<const std::int16_t* const> packets, std::size_t slots, SlotSums& sums) {
    static const SlotKernel kernel = BestSlotKernel();
    std::size_t done = 0;
    sums.anyAtRangeEnd = false;
    if (kernel != nullptr && packets.size() == kBlockPackets) {
        done = kernel(packets.data(), slots, sums);
    }
    AddSlots(packets, done, slots, sums);
}

}  // namespace stalwick
