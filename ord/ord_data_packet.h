// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "ord/optional_vector.h"
#include "ord/ord_format.h"

namespace stalwick {

using ImuValues = std::array<std::uint16_t, kImuValues>;
using UltrasonicValues = std::array<std::uint16_t, kUltrasonicValues>;

// One decoded packet of the stream; docs/ord-format.md shows the position of each field.
struct ORDDataPacket {
    std::uint8_t packetType = 0;
    std::uint8_t channelCountCode = 0;  // the packet describes 32 << code channels
    std::uint8_t headerByte3 = 0;
    std::uint8_t headerByte2 = 0;
    std::uint32_t headerWord = 0;
    std::optional<std::uint64_t> hardwareTimestamp;  // nanoseconds

    // The mask bytes in packet order; present but empty when there are samples and no mask.
    OptionalVector<std::uint8_t> channelMask;

    // High and low nibble of each state byte. The high nibble carries TTL bits 0 to 3.
    std::vector<std::uint8_t> stateHigh;
    std::vector<std::uint8_t> stateLow;

    std::optional<ImuValues> baseIMU;
    std::optional<ImuValues> afeIMU;
    std::optional<UltrasonicValues> ultrasonic;

    // adSamples[channel * samplesPerChannel + i]; 16-bit two's complement, the low 2 bits 0.
    OptionalVector<std::uint16_t> adSamples;

    // Makes the packet empty again; the vectors keep their memory.
    void Reset();

    friend bool operator==(const ORDDataPacket&, const ORDDataPacket&) = default;
};

// The TTL input of each sample, 8 bits, from a packet's nibble lists: the high nibbles are bits 0
// to 3. If the lists differ in length, only the high nibbles count.
void JoinTtlValues(const ORDDataPacket& packet, std::vector<std::uint8_t>& ttlValues);

}  // namespace stalwick
