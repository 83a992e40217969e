// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/support/ord_builder.h"
#include "tests/support/reference_decoder.h"

// Recordings with known damage: the origin of every byte, so that a test knows what can be
// recovered.

namespace stalwick::test {

/** A whole recording in memory. */
struct WholeRecording {
    std::string bytes;
    bool timestamps = true;
    std::vector<std::uint32_t> positions;  // of each packet, and of the end
    std::vector<ReferencePacket> packets;

    /** The packet that begins at this byte; -1 if none does. */
    std::int64_t PacketAt(std::uint32_t position) const;
};

struct WholeRecordingShape {
    bool timestamps = true;
    std::uint8_t channelCountCode = 0;
    std::optional<std::uint8_t> width;  // of all channels, so that A/D blocks are of one length
    std::size_t packetCount = 4000;
};

/** Packets of three kinds in turn; contents repeat after some hundred, timestamps do not. */
WholeRecording MakeWholeRecording(std::uint64_t seed, const WholeRecordingShape& shape);

/** A recording with damage, and where its bytes were before. */
struct DamagedRecording {
    static constexpr std::uint32_t kNew = UINT32_MAX;

    std::string bytes;
    std::vector<std::uint32_t>
        source;               // of each byte: its previous position; kNew: changed or inserted
    std::vector<char> moved;  // of each byte: in a sector that was swapped

    explicit DamagedRecording(const WholeRecording& whole);
    /** Whether bytes [position, position + size) are a stretch of the undamaged one. */
    bool IsIntact(std::size_t position, std::size_t size) const;
};

/** Damages one place after the header: a bit, a cut, an insertion, zeroed or swapped sectors. */
void DamageOnePlace(DamagedRecording& recording, std::mt19937_64& random);

}  // namespace stalwick::test
