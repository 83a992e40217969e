// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "outputs/vtx_data_types.h"

namespace stalwick {

// The records that a recording's packets should produce in each output, computed from the format
// (docs/output-files.md) and not with the code that writes outputs, so that the two can be
// compared. Timestamps of packets are nanoseconds, times of records microseconds.

// One channel file.
class ExpectedChannel {
  public:
    struct Source {
        std::uint32_t channelNumber = 0;  // from 0 within its group
        double samplesPerSecond = 0.0;
        std::uint64_t offset = 0;  // added to times, modulo 2^64
    };
    explicit ExpectedChannel(const Source& source) : source_(source) {}

    // Takes the channel's samples of a packet, scaled, fewer than a record has. Returns the record
    // that they complete, or null; it is valid until the next call.
    const VtxDataTypes::CRRec* Take(std::span<const std::int16_t> samples,
                                    std::optional<std::uint64_t> timestamp);
    // The record that is incomplete at the end of the recording, or null.
    const VtxDataTypes::CRRec* Rest() const;
    // The same before packets that were left out: the next samples begin a record. If packets carry
    // no time, the time of the next record continues by the samples of this one.
    const VtxDataTypes::CRRec* End(bool hasTimestamps);

  private:
    void Start();
    void Complete(bool hasTimestamp);

    Source source_;
    VtxDataTypes::CRRec current_{};
    VtxDataTypes::CRRec complete_{};
    std::uint64_t lastTimestamp_ = 0;  // 0: none, also if a packet had 0
    std::uint32_t phase_ = 0;          // samples since lastTimestamp_, modulo 10
    double counted_ = 0.0;             // microseconds of the records without timestamps
};

// The event file.
class ExpectedEvents {
  public:
    ExpectedEvents(double samplesPerSecond, std::uint64_t offset)
        : samplesPerSecond_(samplesPerSecond), offset_(offset) {}

    // Takes a packet's TTL values, one per sample, and adds its events to `events`.
    void Take(std::span<const std::uint8_t> ttlValues, std::optional<std::uint64_t> timestamp,
              std::vector<VtxDataTypes::EventRec>& events);

  private:
    double samplesPerSecond_;
    std::uint64_t offset_;
    double packetStart_ = 0.0;  // microseconds, for packets without a timestamp
    std::optional<std::uint8_t> lastTtl_;
};

// The raw data file.
class ExpectedRawRecords {
  public:
    struct Source {
        std::uint32_t adChannels = 0;  // from the recording's header
        double samplesPerSecond = 0.0;
        std::uint64_t offset = 0;
    };
    struct Packet {
        std::span<const std::uint16_t> samples;  // samples[channel * 10 + i], as recorded
        std::span<const std::uint8_t> ttlValues;
        std::optional<std::uint64_t> timestamp;
    };
    explicit ExpectedRawRecords(const Source& source) : source_(source) {}

    // Fills `words` with the packet's ten records of one length.
    void Take(const Packet& packet, std::vector<std::uint32_t>& words);

  private:
    Source source_;
    std::uint64_t time_ = 0;
};

// Recorded values as in channel files, products truncated toward zero.
inline constexpr std::int16_t ExpectedADSample(std::uint16_t value) {
    return static_cast<std::int16_t>(static_cast<std::int16_t>(value) * 3190 / 65536);
}
inline constexpr std::int16_t ExpectedImuSample(std::uint16_t value) {
    return static_cast<std::int16_t>(static_cast<std::int16_t>(value) / 256);
}

}  // namespace stalwick
