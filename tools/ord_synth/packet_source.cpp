// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/packet_source.h"

#include <algorithm>

namespace stalwick {

namespace {

constexpr std::int64_t kMillion = 1'000'000;

std::uint64_t TimestampNs(std::uint64_t packetNumber, const SynthOptions& options) {
    const std::uint64_t sample = packetNumber * kSynthSamplesPerPacket;
    const std::uint64_t seconds = sample / options.samplingFrequency;
    const std::uint64_t rest = sample % options.samplingFrequency;
    const std::uint64_t nominal =
        seconds * 1'000'000'000u + rest * 1'000'000'000u / options.samplingFrequency;
    // A rate faster than the header's takes less time; sufficient for a year at 100 ppm.
    const std::int64_t drift =
        static_cast<std::int64_t>(nominal) * options.driftPpm / (kMillion + options.driftPpm);
    return options.firstTimestampNs + nominal - static_cast<std::uint64_t>(drift);
}

}  // namespace

PacketSource::PacketSource(const SynthOptions& options)
    : options_(options),
      signal_(options),
      ttl_(options.seed, options.samplingFrequency),
      baseImu_(options.seed, RandomStream::kBaseImu,
               options.samplingFrequency / kSynthSamplesPerPacket),
      afeImu_(options.seed, RandomStream::kAfeImu,
              options.samplingFrequency / kSynthSamplesPerPacket),
      ultrasonic_(options.seed, options.samplingFrequency / kSynthSamplesPerPacket) {}

bool PacketSource::IsLost(std::uint64_t packetNumber) const {
    for (const SynthGap& gap : options_.gaps) {
        if (packetNumber >= gap.firstLostPacket &&
            packetNumber - gap.firstLostPacket < gap.lostPackets) {
            return true;
        }
    }
    return false;
}

bool PacketSource::IsRepeated() const {
    const auto& repeated = options_.repeatedStamps;
    return packetNumber_ != 0 &&
           std::find(repeated.begin(), repeated.end(), packetNumber_) != repeated.end();
}

std::uint64_t PacketSource::NextPacketNumber() const {
    std::uint64_t number = packetNumber_;
    while (IsLost(number)) ++number;
    return number;
}

void PacketSource::Make(SynthPacket& packet) {
    packet.packetNumber = static_cast<std::uint32_t>(packetNumber_);
    packet.hardwareTimestampNs = TimestampNs(packetNumber_ - (IsRepeated() ? 1 : 0), options_);
    packet.samples.resize(std::size_t{options_.channelCount} * kSynthSamplesPerPacket);
    signal_.NextPacket(packet.samples);
    if (options_.ttl) ttl_.Next(packet.ttlValues);
    if (options_.baseImu) baseImu_.Next(packet.baseImu);
    if (options_.afeImu) afeImu_.Next(packet.afeImu);
    if (options_.ultrasonic) ultrasonic_.Next(packet.ultrasonic);
    ++packetNumber_;
}

void PacketSource::Next(SynthPacket& packet) {
    // Lost packets are made and dropped: the world continued while nothing was received.
    while (IsLost(packetNumber_)) Make(packet);
    Make(packet);
}

}  // namespace stalwick
