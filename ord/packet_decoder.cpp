// SPDX-License-Identifier: BSD-3-Clause
#include "ord/packet_decoder.h"

#include <utility>

#include "ord/ad_block_decoder.h"

namespace stalwick {

namespace {

// The bytes of a span that have not been read yet.
class ByteReader {
  public:
    ByteReader(const std::uint8_t* data, std::size_t length) : at_(data), end_(data + length) {}

    const std::uint8_t* at() const { return at_; }
    std::size_t remaining() const { return static_cast<std::size_t>(end_ - at_); }
    bool Has(std::size_t count) const { return remaining() >= count; }

    void Skip(std::size_t count) { at_ += count; }

    template <typename T>
    T ReadBigEndian() {
        T value = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i) value = static_cast<T>((value << 8U) | *at_++);
        return value;
    }

  private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

void ReadHead(ByteReader& bytes, ORDDataPacket& packet) {
    const std::uint8_t* head = bytes.at();
    packet.packetType = head[0];
    packet.channelCountCode = static_cast<std::uint8_t>(head[1] >> kChannelCountCodeShift);
    packet.headerByte2 = head[2];
    packet.headerByte3 = head[3];
    bytes.Skip(6);  // bytes 4 and 5 are not used
    packet.headerWord = bytes.ReadBigEndian<std::uint32_t>();
}

bool ReadTimestamp(ByteReader& bytes, ORDDataPacket& packet) {
    if (!bytes.Has(kHardwareTimestampSize)) return false;
    packet.hardwareTimestamp = bytes.ReadBigEndian<std::uint64_t>();
    return true;
}

bool ReadChannelMask(ByteReader& bytes, std::size_t size, ORDDataPacket& packet) {
    if (!bytes.Has(size)) return false;
    packet.channelMask.emplace().assign(bytes.at(), bytes.at() + size);
    bytes.Skip(size);
    return true;
}

bool ReadStates(ByteReader& bytes, std::size_t count, ORDDataPacket& packet) {
    if (!bytes.Has(count)) return false;
    for (std::size_t i = 0; i < count; ++i) {
        const auto state = bytes.ReadBigEndian<std::uint8_t>();
        packet.stateHigh.push_back(static_cast<std::uint8_t>(state >> 4U));
        packet.stateLow.push_back(state & 0x0FU);
    }
    return true;
}

template <typename Values>
bool ReadValues(ByteReader& bytes, std::optional<Values>& target) {
    if (!bytes.Has(sizeof(Values))) return false;
    for (std::uint16_t& value : target.emplace()) value = bytes.ReadBigEndian<std::uint16_t>();
    return true;
}

bool ReadADSamples(ByteReader& bytes, std::uint32_t numChannels, std::uint32_t samplesPerChannel,
                   ORDDataPacket& packet) {
    if (!packet.channelMask) packet.channelMask.emplace();
    std::vector<std::uint16_t>& samples = packet.adSamples.engage_keeping_contents();
    const std::uint8_t* end = DecodeADBlock(bytes.at(), bytes.remaining(), numChannels,
                                            samplesPerChannel, *packet.channelMask, samples);
    if (samples.empty()) return false;
    bytes.Skip(static_cast<std::size_t>(end - bytes.at()));
    return true;
}

// Reads everything after the head. Returns which block is truncated, if any.
PacketRefusal ReadBlocks(ByteReader& bytes, std::uint8_t flags, ORDDataPacket& packet,
                         const DecodeOptions& options, bool samplesOverridden) {
    const std::uint32_t numChannels = 32U << packet.channelCountCode;
    // A 256-channel packet has 5 state bytes, yet 10 samples per channel if the caller overrides.
    const std::uint32_t stateCount =
        numChannels == kMostADChannels ? kStatesPerWidestPacket : kSamplesPerPacket;
    const std::uint32_t sampleCount = samplesOverridden ? kSamplesPerPacket : stateCount;

    using enum PacketRefusal;
    if (PacketsCarryTimestamps(options) && !ReadTimestamp(bytes, packet)) return kCutInTimestamp;
    if ((flags & kFlagChannelMask) != 0 && !ReadChannelMask(bytes, numChannels / 8, packet)) {
        return kCutInMask;
    }
    const bool statePerSample = (flags & kFlagStatePerSample) != 0;
    if (!ReadStates(bytes, statePerSample ? stateCount : 1, packet)) return kCutInStates;
    if ((flags & kFlagBaseIMU) != 0 && !ReadValues(bytes, packet.baseIMU)) return kCutInBaseIMU;
    if ((flags & kFlagAfeIMU) != 0 && !ReadValues(bytes, packet.afeIMU)) return kCutInAfeIMU;
    if ((flags & kFlagUltrasonic) != 0 && !ReadValues(bytes, packet.ultrasonic)) {
        return kCutInUltrasonic;
    }
    if ((flags & kFlagADSamples) != 0 && !ReadADSamples(bytes, numChannels, sampleCount, packet)) {
        return kCutInSamples;
    }
    return kNone;
}

}  // namespace

bool PacketsCarryTimestamps(const DecodeOptions& options) {
    return options.has_value() && (options->systemNumber >= kFirstTimestampSystem ||
                                   options->fileVersionNumber >= kFirstTimestampVersion);
}

PacketParse TryParsePacket(std::span<const std::uint8_t> span, ORDDataPacket& packet,
                           const DecodeOptions& options,
                           std::optional<std::uint32_t> samplesOverride) {
    packet.Reset();
    const std::uint8_t* const start = span.data();
    if (!span.empty() && *start != kDataPacketType) return {start, PacketRefusal::kWrongType};
    if (span.size() < kShortestPacketSize) return {start, PacketRefusal::kTooShort};

    ByteReader bytes(start, span.size());
    const std::uint8_t flags = start[1];
    ReadHead(bytes, packet);
    const PacketRefusal refusal =
        ReadBlocks(bytes, flags, packet, options, samplesOverride.has_value());
    if (refusal == PacketRefusal::kNone) return {bytes.at(), refusal};
    packet.Reset();
    return {start, refusal};
}

const std::uint8_t* ParseDataPacket(const std::uint8_t* data, std::size_t length,
                                    ORDDataPacket& packet, const DecodeOptions& options,
                                    std::optional<std::uint32_t> samplesOverride) {
    return TryParsePacket({data, length}, packet, options, samplesOverride).end;
}

namespace {

// The packet to decode into: the one at `count` in the list, or one from `spares`.
ORDDataPacket& PacketAt(std::vector<ORDDataPacket>& packets, std::size_t count,
                        std::vector<ORDDataPacket>& spares) {
    if (count < packets.size()) return packets[count];
    if (spares.empty()) return packets.emplace_back();
    packets.push_back(std::move(spares.back()));
    spares.pop_back();
    return packets.back();
}

}  // namespace

const std::uint8_t* ProcessDataBuffer(const std::uint8_t* data, std::size_t length,
                                      std::vector<ORDDataPacket>& packets,
                                      const DecodeOptions& options,
                                      std::optional<std::uint32_t> samplesOverride,
                                      SpanMemory& memory) {
    const std::uint8_t* const end = data + length;
    std::size_t count = 0;
    memory.packetSizes.clear();
    for (;;) {
        const std::uint8_t* next =
            ParseDataPacket(data, static_cast<std::size_t>(end - data),
                            PacketAt(packets, count, memory.spares), options, samplesOverride);
        if (next == data) break;
        ++count;
        memory.packetSizes.push_back(static_cast<std::uint32_t>(next - data));
        data = next;
    }
    for (; packets.size() > count; packets.pop_back()) {
        memory.spares.push_back(std::move(packets.back()));
    }
    return data;
}

const std::uint8_t* ProcessDataBuffer(const std::uint8_t* data, std::size_t length,
                                      std::vector<ORDDataPacket>& packets,
                                      const DecodeOptions& options,
                                      std::optional<std::uint32_t> samplesOverride) {
    SpanMemory memory;
    return ProcessDataBuffer(data, length, packets, options, samplesOverride, memory);
}

}  // namespace stalwick
