// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "survey/packet_envelope.h"
#include "survey/survey_recording.h"

namespace stalwick {

// The smallest and the largest sample of a channel, column by column, in 16-bit steps.
struct TraceEnvelope {
    std::uint32_t channel = 0;  // from 0
    std::vector<ColumnRange> columns;
};

// What all channels look like at one place.
struct TracePlace {
    double startSeconds = 0.0;
    double seconds = 0.0;
    ColumnScale scale;  // of the columns
    std::vector<TraceEnvelope> channels;
};

// Takes half a second of all channels at three places of a recording.
class TraceCollector {
  public:
    void Begin(const RecordingHeader& header, std::uint64_t fileSize);
    void Take(const WatchedPacket& watched);
    [[nodiscard]] std::vector<TracePlace> Finish();

  private:
    bool NextIsDue(std::uint64_t position) const;
    void EndPlace();

    double samplesPerSecond_ = 0.0;
    std::uint64_t fileSize_ = 0;
    double startSeconds_ = 0.0;
    std::optional<PacketEnvelope> envelope_;  // of the current place
    std::vector<TracePlace> places_;
};

}  // namespace stalwick
