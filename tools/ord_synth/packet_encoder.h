// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/ord_synth/packet_source.h"
#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// Turns packets into bytes of the stream, using for each channel the narrowest delta width that
// holds the packet's samples. docs/ord-format.md describes the layout.
class PacketEncoder {
  public:
    explicit PacketEncoder(const SynthOptions& options);

    // The room that Encode may write to, a few bytes more than the longest packet.
    std::size_t MaxPacketBytes() const;

    // Writes the packet at out and returns its length in bytes.
    std::size_t Encode(const SynthPacket& packet, std::uint8_t* out);

    // How many channels in all packets so far had each delta width.
    const std::array<std::uint64_t, 16>& WidthCounts() const { return widthCounts_; }

    std::size_t EnabledChannels() const { return enabledCount_; }

  private:
    std::uint8_t* EncodeHead(const SynthPacket& packet, std::uint8_t* out) const;
    std::uint8_t* EncodeBlocks(const SynthPacket& packet, std::uint8_t* out) const;
    std::uint8_t* EncodeSamples(const SynthPacket& packet, std::uint8_t* out);
    const std::int16_t* EnabledRows(const SynthPacket& packet);
    void ChooseWidths(const std::int16_t* rows);

    SynthOptions options_;
    std::uint8_t flags_ = 0;
    std::vector<std::uint8_t> channelMask_;
    std::vector<std::uint32_t> enabledChannels_;
    std::size_t enabledCount_;
    std::size_t rowStride_;  // enabled channels, rounded up to pairs
    std::vector<std::int16_t> enabledRows_;
    std::vector<std::uint16_t> changedBits_;
    std::vector<std::uint16_t> valueMasks_;
    std::vector<std::uint8_t> widths_;
    std::array<std::uint64_t, 16> widthCounts_{};
};

}  // namespace stalwick
