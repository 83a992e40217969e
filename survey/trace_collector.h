#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "survey/sample_stretch.h"

namespace stalwick {

// The smallest and the largest value of a channel's samples, column by column.
struct TraceEnvelope {
    struct Column {
        std::int16_t smallest = 0;  // 16-bit steps
        std::int16_t largest = 0;
    };
    std::uint32_t channel = 0;  // from 0
    std::vector<Column> columns;
};

// What all channels look like at one place.
struct TracePlace {
    double startSeconds = 0.0;
    double seconds = 0.0;
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
    std::optional<SampleStretch> stretch_;
    std::vector<TracePlace> places_;
};

}  // namespace stalwick
