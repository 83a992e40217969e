// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "ord/ord_format.h"

namespace stalwick {

inline constexpr std::size_t kMostSlots = std::size_t{kMostADChannels} * kSamplesPerPacket;
inline constexpr std::size_t kBlockPackets = 8;

// The first and the last possible value of a sample: its two lowest bits are 0.
inline constexpr std::int16_t kRangeStart = INT16_MIN;
inline constexpr std::int16_t kRangeEnd = INT16_MAX - 3;

// Sums over packets, one for each of a packet's samples: slot channel * 10 + i.
struct SlotSums {
    std::array<std::int16_t, kMostSlots> smallest;
    std::array<std::int16_t, kMostSlots> largest;
    std::array<std::int32_t, kMostSlots> sum;            // of the 16-bit samples
    std::array<std::uint64_t, kMostSlots> sumOfSquares;  // of the 14-bit ones
    // For the packets added last: whether the slot has a value at an end of the range, and whether
    // it and the next two slots are equal.
    std::array<std::uint16_t, kMostSlots> atRangeEnd;
    std::array<std::uint16_t, kMostSlots> threeAlike;
    bool anyAtRangeEnd = false;  // of the slots

    void Clear();
};

// Adds packets with this many slots. Takes a fraction of the decoding time, and least for
// kBlockPackets of them at once.
void AddPackets(std::span<const std::int16_t* const> packets, std::size_t slots, SlotSums& sums);

}  // namespace stalwick
