// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "ord/ord_format.h"

namespace stalwick {

// Eight values of 8 bits, one for each of eight channels: value i in bits 8i to 8i + 7.
using EightBytes = std::uint64_t;

inline constexpr std::uint32_t kChannelsPerGroup = 8;

// The positions of the bits of one channel group's row, relative to the group's first bit in that
// row. Channels without bits have kNoByte in `firstBytes`.
struct GroupLayout {
    EightBytes firstBytes;  // the byte that holds the channel's first bit
    EightBytes bitsToSkip;  // of that byte, 0 to 7
    EightBytes widths;      // bits of the channel's value, 1 to 15
};
inline constexpr std::uint8_t kNoByte = 0x80;

struct ChannelGroup8 {
    GroupLayout firstValues;
    GroupLayout deltas;
    std::uint32_t firstValuesBit;  // from the first bit of the block's first values
    std::uint32_t deltasBit;       // from the first bit of a row of deltas
};

// The position of every bit of an A/D block, computed once for all its rows. A width of 0 decodes
// exactly like a width of 1, so a block of N samples per channel is
//
//   4E bits of widths | 14E bits of first values | N - 1 rows of rowBits bits of deltas
//
// with E enabled channels. Only BuildADBlockPlan fills it: clearing it first would cost as much
// as planning. docs/ord-format.md describes the block.
struct ADBlockPlan {
    std::array<ChannelGroup8, kMostADChannels / kChannelsPerGroup> groups;
    std::uint32_t groupCount = 0;
    std::uint32_t enabledCount = 0;
    std::uint32_t rowBits = 0;  // of a row of deltas: the widths' sum, with 1 for a width of 0
    std::uint32_t firstValuesBit = 0;  // of the first values, from the block's first bit
    std::uint32_t deltasBit = 0;       // of the first row of deltas, likewise

    // Bits that decoding the block takes.
    [[nodiscard]] std::uint32_t BlockBits(std::uint32_t samplesPerChannel) const {
        return deltasBit + (samplesPerChannel - 1) * rowBits;
    }
};

// Plans the block that begins at `data`. `numChannels` is a multiple of 8, at most 256;
// `channelMask` has numChannels / 8 bytes, or none if every channel is enabled. Returns false, with
// the plan unfinished, if `length` bytes do not hold the widths.
[[nodiscard]] bool BuildADBlockPlan(const std::uint8_t* data, std::size_t length,
                                    std::uint32_t numChannels,
                                    std::span<const std::uint8_t> channelMask, ADBlockPlan& plan);

// The sum of the block's widths as in the block; `data` holds them all.
[[nodiscard]] std::uint32_t SumADWidths(const std::uint8_t* data, std::uint32_t enabledCount);

}  // namespace stalwick
