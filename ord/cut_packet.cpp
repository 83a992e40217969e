// SPDX-License-Identifier: BSD-3-Clause
#include "ord/cut_packet.h"

#include "ord/ord_format.h"
#include "ord/packet_decoder.h"

namespace stalwick {

namespace {

constexpr std::size_t kKindOffset = 1;  // of the byte in a packet
// One whole packet alone can be a coincidence, unless it ends exactly where the stream does.
constexpr unsigned kEnoughPackets = 2;

std::uint8_t KindOf(const ORDDataPacket& packet) {
    unsigned kind = static_cast<unsigned>(packet.channelCountCode) << kChannelCountCodeShift;
    if (packet.adSamples) kind |= kFlagADSamples;
    if (packet.baseIMU) kind |= kFlagBaseIMU;
    if (packet.afeIMU) kind |= kFlagAfeIMU;
    if (packet.ultrasonic) kind |= kFlagUltrasonic;
    if (packet.stateHigh.size() > 1) kind |= kFlagStatePerSample;
    // Samples without a mask have an empty one.
    if (packet.channelMask && !packet.channelMask->empty()) kind |= kFlagChannelMask;
    return static_cast<std::uint8_t>(kind);
}

std::size_t LongestOfKind(std::uint8_t kind, const DecodeOptions& options) {
    const std::size_t channels = std::size_t{32} << (kind >> kChannelCountCodeShift);
    std::size_t size = kPacketHeadSize + 1;
    if (PacketsCarryTimestamps(options)) size += kHardwareTimestampSize;
    if ((kind & kFlagChannelMask) != 0) size += channels / 8;
    if ((kind & kFlagStatePerSample) != 0) {
        size += (channels == kMostADChannels ? kStatesPerWidestPacket : kSamplesPerPacket) - 1;
    }
    if ((kind & kFlagBaseIMU) != 0) size += sizeof(ImuValues);
    if ((kind & kFlagAfeIMU) != 0) size += sizeof(ImuValues);
    if ((kind & kFlagUltrasonic) != 0) size += sizeof(UltrasonicValues);
    if ((kind & kFlagADSamples) != 0) size += kLargestADBlock * channels / kMostADChannels;
    return size;
}

// Whether the span begins with enough packets to rule out coincidence.
bool BeginsWithPackets(std::span<const std::uint8_t> span, const PacketKinds& kinds,
                       const DecodeOptions& options) {
    ORDDataPacket packet;
    for (unsigned count = 0; count < kEnoughPackets; ++count) {
        if (span.size() <= kKindOffset || !kinds.CanBe(span[kKindOffset])) return false;
        const PacketParse parse = TryParsePacket(span, packet, options, kSamplesPerPacket);
        if (parse.refusal != PacketRefusal::kNone) return false;
        span = span.subspan(static_cast<std::size_t>(parse.end - span.data()));
        if (span.empty()) return true;
    }
    return true;
}

}  // namespace

void PacketKinds::Count(const ORDDataPacket& packet) {
    kinds_.set(KindOf(packet));
}

bool IsCutPacket(std::span<const std::uint8_t> tail, const PacketKinds& kinds,
                 const DecodeOptions& options) {
    if (tail.empty() || tail.front() != kDataPacketType) return false;
    if (tail.size() <= kKindOffset) return true;
    const std::uint8_t kind = tail[kKindOffset];
    if (!kinds.CanBe(kind) || tail.size() >= LongestOfKind(kind, options)) return false;
    for (std::size_t start = 1; start < tail.size(); ++start) {
        if (BeginsWithPackets(tail.subspan(start), kinds, options)) return false;
    }
    return true;
}

}  // namespace stalwick
