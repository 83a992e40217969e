#pragma once

#include <bitset>
#include <cstdint>
#include <span>

#include "ord/decode_options.h"
#include "ord/ord_data_packet.h"

namespace stalwick {

// The kinds of packets that a stream has had. A packet's second byte is its kind: the channel count
// and which blocks it has.
class PacketKinds {
  public:
    void Count(const ORDDataPacket& packet);
    // Before the first packet any kind can come.
    [[nodiscard]] bool CanBe(std::uint8_t kind) const { return kinds_.none() || kinds_[kind]; }

  private:
    std::bitset<256> kinds_;
};

// Whether the bytes after a stream's last whole packet are the beginning of one more packet, as a
// recorder leaves it that is switched off. They are none if they begin another kind of packet than
// came before, if such a packet is never so long, or if whole packets stand among them.
[[nodiscard]] bool IsCutPacket(std::span<const std::uint8_t> tail, const PacketKinds& kinds,
                               const DecodeOptions& options);

}  // namespace stalwick
