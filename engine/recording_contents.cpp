// SPDX-License-Identifier: BSD-3-Clause
#include "engine/recording_contents.h"

#include "engine/ttl_events.h"
#include "outputs/raw_record.h"

namespace stalwick {

namespace {

std::uint32_t ChannelsOf(std::size_t channelCountCode) {
    constexpr std::uint32_t kFewest = 32;
    return kFewest << channelCountCode;
}

}  // namespace

void RecordingContents::Count(const ORDDataPacket& packet) {
    census_.Count(packet);
    if (packet.adSamples) ++adPackets_[packet.channelCountCode];
    if (packet.baseIMU) ++baseImuPackets_;
    if (packet.afeIMU) ++afeImuPackets_;
    if (packet.ultrasonic) ++ultrasonicPackets_;
    JoinTtlValues(packet, ttlValues_);
    for (const std::uint8_t value : ttlValues_) {
        // The first value of a recording produces no event.
        if (lastTtl_ && *lastTtl_ != value) ++ttlChanges_;
        lastTtl_ = value;
    }
}

std::uint64_t RecordingContents::Samples(ChannelGroup group, std::uint32_t channel) const {
    switch (group) {
        case ChannelGroup::kBaseIMU:
            return baseImuPackets_;
        case ChannelGroup::kAfeIMU:
            return afeImuPackets_;
        case ChannelGroup::kUltrasonic:
            return ultrasonicPackets_ * kUltrasonicValues;
        case ChannelGroup::kAD:
            break;
    }
    std::uint64_t packets = 0;
    for (std::size_t code = 0; code < adPackets_.size(); ++code) {
        if (channel < ChannelsOf(code)) packets += adPackets_[code];
    }
    return packets * kSamplesPerPacket;
}

std::uint64_t RecordingContents::RawBytes() const {
    std::uint64_t words = 0;
    for (std::size_t code = 0; code < adPackets_.size(); ++code) {
        words += adPackets_[code] * kSamplesPerPacket * RawRecordWords(ChannelsOf(code));
    }
    return words * sizeof(std::uint32_t);
}

std::wstring CountRecording(ORDFileReader& reader, const std::atomic<std::uint8_t>& cancelRequested,
                            RecordingContents& contents) {
    std::vector<ORDDataPacket> packets;
    for (bool endOfFile = false; !endOfFile;) {
        if (cancelRequested.load(std::memory_order_relaxed) != 0) return L"was not read to its end";
        if (reader.GetData(packets, endOfFile) != 0) {
            return L"cannot be read whole: " + reader.GetErrorMessage();
        }
        for (const ORDDataPacket& packet : packets) contents.Count(packet);
    }
    if (reader.BytesRead() < kHeaderBlockSize) return L"ends inside its header";
    if (reader.ContradictsVersion()) return L"has packets that contradict its -FileVersion";
    // A recorder that was switched off leaves an incomplete packet, and nothing else is lost.
    if (reader.UnconsumedBytes() == 0 || reader.EndsInACutPacket()) return {};
    return L"is damaged at byte " + std::to_wstring(reader.NextPacketPosition());
}

}  // namespace stalwick
