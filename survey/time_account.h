// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace stalwick {

// Samples that the recorder did not receive: a step of the timestamps that is too long.
struct RecordingGap {
    std::uint64_t position = 0;  // of the packet after it
    double atSeconds = 0.0;      // of the first missing sample
    double seconds = 0.0;
    std::uint64_t missingSamples = 0;  // per channel
};

// A timestamp earlier than that of the previous packet.
struct BackwardTimestamp {
    std::uint64_t position = 0;
    std::uint64_t nanoseconds = 0;  // by how much
};

// What a recording's hardware timestamps show about its time. Seconds count from the first sample.
struct TimeAccount {
    double durationSeconds = 0.0;  // including gaps; without timestamps that of the samples alone
    std::optional<std::uint64_t> firstTimestampNs;
    std::optional<std::uint64_t> lastTimestampNs;
    std::optional<double> measuredRate;  // samples per second by the timestamps
    std::optional<double> driftPpm;      // relative to the header's

    std::vector<RecordingGap> gaps;
    std::uint64_t missingSamples = 0;  // in all gaps, per channel
    double gapSeconds = 0.0;
    std::uint64_t repeatedTimestamps = 0;
    std::uint64_t shortSteps = 0;  // timestamps that are too early, but not back in time
    std::vector<BackwardTimestamp> backwardTimestamps;
};

}  // namespace stalwick
