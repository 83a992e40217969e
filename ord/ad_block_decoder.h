// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <boost/dynamic_bitset.hpp>

#include "ord/bit_reader.h"
#include "ord/ord_format.h"

namespace stalwick {

using ChannelEnableSet = boost::dynamic_bitset<std::uint8_t>;

// Bits of each channel's deltas, 0 to 15; 0 for a channel that is not enabled.
using ChannelBitWidths = std::array<std::uint8_t, kMostADChannels>;

// Bit j of the set is channel j: in the packet, the mask bytes of the highest channels come first.
[[nodiscard]] ChannelEnableSet BuildChannelEnableSet(const std::vector<std::uint8_t>& channelMask);

// Reads a 4-bit width for each enabled channel, in channel order; an empty set enables all.
[[nodiscard]] ChannelBitWidths ReadChannelBitWidths(BitReader& reader, std::uint32_t numChannels,
                                                    const ChannelEnableSet& enabled);

// Decodes a bit-packed block of `samplesPerChannel` samples of `numChannels` channels (at most 256)
// into samples[channel * samplesPerChannel + i]; channels that the mask leaves out are 0. An empty
// mask enables every channel. Returns the position after the block; if the block is not complete,
// returns `data` and leaves `samples` empty. docs/ord-format.md describes the block.
const std::uint8_t* DecodeADBlock(const std::uint8_t* data, std::size_t length,
                                  std::uint32_t numChannels, std::uint32_t samplesPerChannel,
                                  const std::vector<std::uint8_t>& channelMask,
                                  std::vector<std::uint16_t>& samples);

}  // namespace stalwick
