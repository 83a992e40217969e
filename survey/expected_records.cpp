// SPDX-License-Identifier: BSD-3-Clause
#include "survey/expected_records.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "outputs/raw_record.h"

namespace stalwick {

namespace {

using VtxDataTypes::CRRec;
using VtxDataTypes::EventRec;
using VtxDataTypes::kSamplesPerRecord;

constexpr std::uint32_t kPacketSamples = 10;
constexpr double kMicrosecondsPerSecond = 1e6;
constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kNanosecondsPerMicrosecond = 1e3;

// Truncated; values beyond 64 bits become the nearest end.
std::uint64_t Truncated(double value) {
    constexpr double kEnd = 18446744073709551616.0;  // 2^64
    if (!(value >= 0.0)) return 0;
    if (value >= kEnd) return std::numeric_limits<std::uint64_t>::max();
    return static_cast<std::uint64_t>(value);
}

std::uint64_t PacketTime(std::uint64_t timestamp, std::uint64_t offset) {
    return Truncated(static_cast<double>(timestamp) / kNanosecondsPerMicrosecond) + offset;
}

// Truncated at every sample, so times lag if the sample period is not a whole number of
// microseconds.
std::uint64_t NextSampleTime(std::uint64_t time, double samplesPerSecond) {
    return Truncated(static_cast<double>(time) + kMicrosecondsPerSecond / samplesPerSecond);
}

}  // namespace

void ExpectedChannel::Start() {
    current_ = {};
    current_.channelNumber = source_.channelNumber;
    current_.sampleFrequency = static_cast<std::uint32_t>(source_.samplesPerSecond);
    if (lastTimestamp_ == 0) {
        current_.timestamp = Truncated(counted_);
        return;
    }
    const double sinceTimestamp = phase_ * (kNanosecondsPerSecond / source_.samplesPerSecond);
    const double nanoseconds = sinceTimestamp + static_cast<double>(lastTimestamp_);
    current_.timestamp = Truncated(nanoseconds / kNanosecondsPerMicrosecond) + source_.offset;
}

const CRRec* ExpectedChannel::Take(std::span<const std::int16_t> samples,
                                   std::optional<std::uint64_t> timestamp) {
    if (timestamp && *timestamp != lastTimestamp_) {
        lastTimestamp_ = *timestamp;
        phase_ = 0;
    }
    if (current_.numValidSamples == 0) Start();
    const std::size_t free = kSamplesPerRecord - current_.numValidSamples;
    const auto fitting = samples.first(std::min(samples.size(), free));
    std::copy(fitting.begin(), fitting.end(), current_.samples.begin() + current_.numValidSamples);
    current_.numValidSamples += static_cast<std::uint32_t>(fitting.size());
    phase_ = (phase_ + static_cast<std::uint32_t>(fitting.size())) % kPacketSamples;
    if (current_.numValidSamples < kSamplesPerRecord) return nullptr;

    Complete(timestamp.has_value());
    const auto rest = samples.subspan(fitting.size());
    if (!rest.empty()) {
        Start();
        // These do not count in the phase.
        std::copy(rest.begin(), rest.end(), current_.samples.begin());
        current_.numValidSamples = static_cast<std::uint32_t>(rest.size());
    }
    return &complete_;
}

void ExpectedChannel::Complete(bool hasTimestamp) {
    complete_ = std::exchange(current_, {});
    if (hasTimestamp) return;
    counted_ += (kMicrosecondsPerSecond / source_.samplesPerSecond) * complete_.numValidSamples;
}

const CRRec* ExpectedChannel::End(bool hasTimestamps) {
    if (Rest() == nullptr) return nullptr;
    Complete(hasTimestamps);
    return &complete_;
}

const CRRec* ExpectedChannel::Rest() const {
    return current_.numValidSamples == 0 ? nullptr : &current_;
}

void ExpectedEvents::Take(std::span<const std::uint8_t> ttlValues,
                          std::optional<std::uint64_t> timestamp, std::vector<EventRec>& events) {
    constexpr std::uint16_t kTtlChangeId = 21;
    constexpr std::string_view kTtlChangeText = "TTL Change.";
    std::uint64_t time = timestamp ? PacketTime(*timestamp, offset_) : Truncated(packetStart_);
    for (const std::uint8_t ttl : ttlValues) {
        // The first value of a recording is not a change.
        if (ttl != lastTtl_.value_or(ttl)) {
            EventRec event{};
            event.timestamp = time;
            event.eventId = kTtlChangeId;
            event.ttlValue = ttl;
            std::copy(kTtlChangeText.begin(), kTtlChangeText.end(), event.eventString.begin());
            events.push_back(event);
        }
        lastTtl_ = ttl;
        time = NextSampleTime(time, samplesPerSecond_);
    }
    // Ten samples per packet, whatever it contains.
    packetStart_ += kMicrosecondsPerSecond / samplesPerSecond_ * 10.0;
}

void ExpectedRawRecords::Take(const Packet& packet, std::vector<std::uint32_t>& words) {
    words.clear();
    if (packet.timestamp) time_ = PacketTime(*packet.timestamp, source_.offset);
    std::uint32_t ttl = 0;
    for (std::size_t i = 0; i < kPacketSamples; ++i) {
        if (i < packet.ttlValues.size()) ttl = packet.ttlValues[i];
        const std::size_t start = words.size();
        words.resize(start + kRawFirstSampleWord);
        words[start + kRawStartMarkerWord] = kRawStartMarker;
        words[start + kRawRecordIdWord] = kRawRecordId;
        words[start + kRawSizeWord] = source_.adChannels + kRawSizeBesideSamples;
        constexpr unsigned kHalf = 32;
        words[start + kRawTimestampHighWord] = static_cast<std::uint32_t>(time_ >> kHalf);
        words[start + kRawTimestampLowWord] = static_cast<std::uint32_t>(time_);
        words[start + kRawTtlWord] = ttl;
        for (std::size_t k = i; k < packet.samples.size(); k += kPacketSamples) {
            const std::int32_t value = static_cast<std::int16_t>(packet.samples[k]) * 3190 / 256;
            words.push_back(static_cast<std::uint32_t>(value));
        }
        words.push_back(RawChecksum(std::span(words).subspan(start)));
        time_ = NextSampleTime(time_, source_.samplesPerSecond);
    }
}

}  // namespace stalwick
