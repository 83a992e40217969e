// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <bitset>
#include <cstdint>
#include <span>

#include "ord/decode_options.h"
#include "ord/ord_data_packet.h"

namespace stalwick {

// The kinds of packets in a stream so far. A packet's second byte is its kind: the channel count
// and which blocks it has.
class PacketKinds {
  public:
    void Count(const ORDDataPacket& packet);
    // Before the first packet any kind is possible.
    [[nodiscard]] bool CanBe(std::uint8_t kind) const { return kinds_.none() || kinds_[kind]; }

  private:
    std::bitset<256> kinds_;
};

// Whether the bytes after a stream's last whole packet are the beginning of one more packet, which
// a recorder leaves when it is switched off. They are not if they begin another kind of packet than
// any before, if such a packet is never that long, or if they contain whole packets.
[[nodiscard]] bool IsCutPacket(std::span<const std::uint8_t> tail, const PacketKinds& kinds,
                               const DecodeOptions& options);

}  // namespace stalwick
