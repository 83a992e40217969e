// SPDX-License-Identifier: BSD-3-Clause
#include "ord/version_check.h"

#include "ord/ord_format.h"
#include "ord/packet_decoder.h"

namespace stalwick {

namespace {

// So many consecutive packets are no coincidence.
constexpr unsigned kEnoughPackets = 16;
// One whole packet alone can be a coincidence: any few bytes after a type byte form one.
constexpr unsigned kFewestPackets = 2;

unsigned CountPackets(const std::uint8_t* data, std::size_t length, const DecodeOptions& options) {
    ORDDataPacket packet;
    const std::uint8_t* const end = data + length;
    for (unsigned count = 0; count < kEnoughPackets; ++count) {
        const std::uint8_t* const next = ParseDataPacket(data, static_cast<std::size_t>(end - data),
                                                         packet, options, kSamplesPerPacket);
        if (next == data) return count;
        data = next;
    }
    return kEnoughPackets;
}

}  // namespace

bool PacketsContradictVersion(const std::uint8_t* data, std::size_t length,
                              const DecodeOptions& options) {
    const unsigned asStated = CountPackets(data, length, options);
    if (asStated == kEnoughPackets) return false;
    const PacketFormat other{0, PacketsCarryTimestamps(options) ? 0 : kFirstTimestampVersion};
    const unsigned otherwise = CountPackets(data, length, other);
    return otherwise >= kFewestPackets && otherwise > asStated;
}

}  // namespace stalwick
