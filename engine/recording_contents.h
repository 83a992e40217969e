// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/packet_census.h"
#include "engine/wanted_outputs.h"
#include "ord/ord_file_reader.h"

namespace stalwick {

// How much of each output a recording's packets produce, counted without making one.
class RecordingContents {
  public:
    void Count(const ORDDataPacket& packet);

    // Samples of a channel file.
    [[nodiscard]] std::uint64_t Samples(ChannelGroup group, std::uint32_t channel) const;
    [[nodiscard]] std::uint64_t Events() const { return ttlChanges_; }
    // For all raw records, without the header.
    [[nodiscard]] std::uint64_t RawBytes() const;
    // The last A/D channel, from 1, of which any packet had samples.
    [[nodiscard]] std::uint32_t MostADChannels() const { return census_.MostCarried(); }
    [[nodiscard]] bool Carries(ChannelGroup sensor) const { return census_.Carries(sensor); }

  private:
    PacketCensus census_;
    std::array<std::uint64_t, 4> adPackets_{};  // by channel-count code
    std::uint64_t baseImuPackets_ = 0;
    std::uint64_t afeImuPackets_ = 0;
    std::uint64_t ultrasonicPackets_ = 0;
    std::uint64_t ttlChanges_ = 0;
    std::optional<std::uint8_t> lastTtl_;
    std::vector<std::uint8_t> ttlValues_;
};

// Reads an open recording to its end and counts its packets. Returns nothing if all of it was
// counted and no data are lost; otherwise the reason, in words that follow "the recording".
[[nodiscard]] std::wstring CountRecording(ORDFileReader& reader,
                                          const std::atomic<std::uint8_t>& cancelRequested,
                                          RecordingContents& contents);

}  // namespace stalwick
