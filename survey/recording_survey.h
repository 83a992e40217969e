// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ord/packet_decoder.h"
#include "ord/recording_header.h"
#include "survey/time_account.h"

namespace stalwick {

// What a recording holds, as plain values; nothing is printed. Times are seconds from the first
// sample; positions are bytes of the file.

// Bytes without certain packets, and what was lost in them as far as timestamps show.
struct DamagedStretch {
    std::uint64_t position = 0;
    std::uint64_t bytes = 0;
    PacketRefusal refusal = PacketRefusal::kNone;  // as in StreamPart
    std::uint64_t noticedAt = 0;
    std::optional<double> atSeconds;  // without timestamps: as if nothing had been lost before
    std::optional<std::uint64_t> missingSamples;  // per channel
};

// The recorded samples of one channel, in the header's volts per step.
struct ChannelStatistics {
    std::uint32_t channel = 0;  // from 0; its file is CSC1 for 0
    std::uint64_t samples = 0;
    double minMicrovolts = 0.0;
    double maxMicrovolts = 0.0;
    double meanMicrovolts = 0.0;
    double rmsMicrovolts = 0.0;        // about 0, not about the mean
    std::uint64_t atRangeEnds = 0;     // samples with the smallest or the largest possible value
    std::uint64_t longestFlatRun = 0;  // equal samples in a row, ending at a gap or damage
    double noiseMicrovolts = 0.0;      // RMS about the mean
    // The slope of the least-squares line through the means of the channel's whole seconds of
    // samples, without gaps; none for fewer than two seconds.
    std::optional<double> driftMicrovoltsPerMinute;
};

// How many packets have each block.
struct BlockCounts {
    std::uint64_t adSamples = 0;
    std::uint64_t baseImu = 0;
    std::uint64_t afeImu = 0;
    std::uint64_t ultrasonic = 0;
    std::uint64_t channelMask = 0;
    std::uint64_t statePerSample = 0;
    std::uint64_t hardwareTimestamp = 0;
};

// An output that a conversion with every output switched on would make.
struct OutputSize {
    std::wstring name;
    std::uint64_t records = 0;
    std::uint64_t bytes = 0;
};

inline constexpr std::size_t kTtlLines = 8;

struct RecordingSurvey : TimeAccount {
    std::wstring error;  // why everything else is empty; empty if nothing went wrong
    std::wstring path;
    std::uint64_t fileSize = 0;  // bytes
    RecordingHeader header;
    bool hasTimestamps = false;
    bool quick = false;  // only the first and the last packets were read

    std::uint64_t packets = 0;      // that were read
    std::uint64_t packetBytes = 0;  // of these

    BlockCounts blocks;
    std::array<std::uint64_t, 4> packetsByChannelCode{};  // of 32, 64, 128 and 256 channels
    std::uint32_t channelsCarried = 0;                    // of the widest packet
    std::uint32_t channelsMasked = 0;                     // of these, never recorded
    std::array<std::uint64_t, kTtlLines> ttlChanges{};
    std::uint64_t ttlEvents = 0;  // samples at which any line changed

    std::vector<DamagedStretch> damage;
    std::uint64_t damagedBytes = 0;
    std::uint64_t cutEndBytes = 0;  // of a last packet that lacks its end
    PacketRefusal cutEndRefusal = PacketRefusal::kNone;
    std::wstring readError;  // the system's reason if the file could not be read to its end

    std::vector<ChannelStatistics> channelStatistics;  // of channels with samples
    // For the packets before the first damage, where a conversion ends.
    std::vector<OutputSize> outputs;

    [[nodiscard]] bool LostData() const { return !damage.empty() || !readError.empty(); }
};

}  // namespace stalwick
