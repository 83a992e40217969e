// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "ord/ord_data_packet.h"
#include "outputs/channel_options.h"

namespace stalwick {

// Which A/D channels and sensors the packets of a recording carry.
class PacketCensus {
  public:
    void Count(const ORDDataPacket& packet) {
        Note(ChannelGroup::kBaseIMU, packet.baseIMU.has_value());
        Note(ChannelGroup::kAfeIMU, packet.afeIMU.has_value());
        Note(ChannelGroup::kUltrasonic, packet.ultrasonic.has_value());
        if (!packet.adSamples) return;
        const std::uint32_t channels = 32U << packet.channelCountCode;
        mostDescribed_ = std::max(mostDescribed_, channels);
        mostCarried_ = std::max(mostCarried_, HighestEnabled(packet, channels));
    }

    // Number of channels of the widest packet, including those that its mask leaves out.
    [[nodiscard]] std::uint32_t MostDescribed() const { return mostDescribed_; }
    // The last channel, from 1, of which any packet had samples; 0 if none had.
    [[nodiscard]] std::uint32_t MostCarried() const { return mostCarried_; }

    // Whether any packet had values of that sensor.
    [[nodiscard]] bool Carries(ChannelGroup sensor) const {
        return carried_[static_cast<std::size_t>(sensor)];
    }

  private:
    void Note(ChannelGroup sensor, bool present) {
        if (present) carried_[static_cast<std::size_t>(sensor)] = true;
    }

    // The mask's first byte has the highest channels.
    static std::uint32_t HighestEnabled(const ORDDataPacket& packet, std::uint32_t channels) {
        if (packet.channelMask->empty()) return channels;
        std::uint32_t end = channels;
        for (unsigned bits : *packet.channelMask) {
            for (std::uint32_t channel = end; bits != 0; --channel, bits = (bits << 1U) & 0xFFU) {
                if ((bits & 0x80U) != 0) return channel;
            }
            end -= 8;
        }
        return 0;
    }

    std::array<bool, 4> carried_{};  // by channel group; for A/D channels see mostCarried_
    std::uint32_t mostDescribed_ = 0;
    std::uint32_t mostCarried_ = 0;
};

}  // namespace stalwick
