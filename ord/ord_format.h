// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

namespace stalwick {

// The sizes and bits of a wireless raw data file (.ord). docs/ord-format.md draws the layout.

inline constexpr std::size_t kHeaderBlockSize = 16384;  // bytes of header text, zero padded
inline constexpr std::size_t kDataBufferSize = 50000;   // bytes of the stream decoded at a time

inline constexpr std::uint8_t kDataPacketType = 4;
inline constexpr std::size_t kPacketHeadSize = 10;
inline constexpr std::size_t kShortestPacketSize = kPacketHeadSize + 1;  // head and a state byte
inline constexpr std::size_t kHardwareTimestampSize = 8;

// Bits of a packet's second byte.
inline constexpr std::uint8_t kFlagADSamples = 1U << 0U;
inline constexpr std::uint8_t kFlagBaseIMU = 1U << 1U;
inline constexpr std::uint8_t kFlagAfeIMU = 1U << 2U;
inline constexpr std::uint8_t kFlagUltrasonic = 1U << 3U;
inline constexpr std::uint8_t kFlagStatePerSample = 1U << 4U;
inline constexpr std::uint8_t kFlagChannelMask = 1U << 5U;
inline constexpr unsigned kChannelCountCodeShift = 6;

inline constexpr std::uint32_t kMostADChannels = 256;
inline constexpr std::uint32_t kSamplesPerPacket = 10;      // per channel, and per state-byte list
inline constexpr std::uint32_t kStatesPerWidestPacket = 5;  // of a 256-channel packet

inline constexpr std::size_t kImuValues = 9;
inline constexpr std::size_t kUltrasonicValues = 70;

// The A/D block: a 4-bit width for each enabled channel, a 14-bit first value each, then deltas.
inline constexpr unsigned kWidthBits = 4;
inline constexpr unsigned kWidestDelta = 15;  // bits
inline constexpr unsigned kFirstValueBits = 14;
inline constexpr unsigned kSampleShift = 2;  // a 14-bit converter value fills the upper bits

// Size in bytes of the largest A/D block, and of a 256-channel packet with it and every other
// block.
inline constexpr std::size_t kLargestADBlock =
    kMostADChannels * (kWidthBits + kFirstValueBits + (kSamplesPerPacket - 1) * kWidestDelta) / 8;
inline constexpr std::size_t kLongestPacketSize =
    kPacketHeadSize + kHardwareTimestampSize + kMostADChannels / 8 + kStatesPerWidestPacket +
    (2 * kImuValues + kUltrasonicValues) * sizeof(std::uint16_t) + kLargestADBlock;

// Packets carry a hardware timestamp from this file version number on.
inline constexpr std::int32_t kFirstTimestampVersion = 20;
inline constexpr std::int32_t kFirstTimestampSystem = 240;

}  // namespace stalwick
