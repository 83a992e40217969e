#include "tools/ord_synth/packet_source.h"

namespace stalwick {

namespace {

// The headstage had been switched on for a while: a time of 0 would mean "no time" to a reader.
constexpr std::uint64_t kFirstTimestampNs = 754'321'098'765u;

std::uint64_t TimestampNs(std::uint64_t packetNumber, std::uint32_t samplingFrequency) {
    const std::uint64_t sample = packetNumber * kSynthSamplesPerPacket;
    const std::uint64_t seconds = sample / samplingFrequency;
    const std::uint64_t rest = sample % samplingFrequency;
    return kFirstTimestampNs + seconds * 1'000'000'000u + rest * 1'000'000'000u / samplingFrequency;
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

std::uint64_t PacketSource::NextPacketNumber() const {
    std::uint64_t number = packetNumber_;
    while (IsLost(number)) ++number;
    return number;
}

void PacketSource::Make(SynthPacket& packet) {
    packet.packetNumber = static_cast<std::uint32_t>(packetNumber_);
    packet.hardwareTimestampNs = TimestampNs(packetNumber_, options_.samplingFrequency);
    packet.samples.resize(std::size_t{options_.channelCount} * kSynthSamplesPerPacket);
    signal_.NextPacket(packet.samples);
    if (options_.ttl) ttl_.Next(packet.ttlValues);
    if (options_.baseImu) baseImu_.Next(packet.baseImu);
    if (options_.afeImu) afeImu_.Next(packet.afeImu);
    if (options_.ultrasonic) ultrasonic_.Next(packet.ultrasonic);
    ++packetNumber_;
}

void PacketSource::Next(SynthPacket& packet) {
    // Lost packets are made and dropped: the world went on while nothing was received.
    while (IsLost(packetNumber_)) Make(packet);
    Make(packet);
}

}  // namespace stalwick
