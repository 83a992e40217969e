// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tools/ord_synth/sensor_source.h"
#include "tools/ord_synth/signal_source.h"
#include "tools/ord_synth/synth_options.h"
#include "tools/ord_synth/ttl_source.h"

namespace stalwick {

// The contents of one packet, before encoding. Blocks that the options leave out hold zeros.
struct SynthPacket {
    std::uint32_t packetNumber = 0;  // counts lost packets too
    std::uint64_t hardwareTimestampNs = 0;
    std::array<std::uint8_t, kSynthSamplesPerPacket> ttlValues{};  // one per sample
    ImuValues baseImu{};
    ImuValues afeImu{};
    UltrasonicValues ultrasonic{};
    std::vector<std::int16_t> samples;  // samples[s * channelCount + channel], 14-bit values
};

// The packets of a recording in order of time, without the lost ones.
class PacketSource {
  public:
    explicit PacketSource(const SynthOptions& options);

    // The number of the packet that Next returns next; lost ones are counted.
    std::uint64_t NextPacketNumber() const;

    void Next(SynthPacket& packet);

  private:
    void Make(SynthPacket& packet);
    bool IsRepeated() const;
    bool IsLost(std::uint64_t packetNumber) const;

    SynthOptions options_;
    SignalSource signal_;
    TtlSource ttl_;
    ImuSource baseImu_;
    ImuSource afeImu_;
    UltrasonicSource ultrasonic_;
    std::uint64_t packetNumber_ = 0;
};

}  // namespace stalwick
