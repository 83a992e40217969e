// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "survey/recording_survey.h"

namespace stalwick {

// The rules by which a channel is named (docs/user-guide.md): the noise is the RMS about the mean.
struct SignalRules {
    double flatBelowMicrovolts = 0.5;  // noise below it, or
    double flatRunSeconds = 1.0;       // one value for this long
    double clippedAboveShare = 0.001;  // of the samples at an end of the converter's range
    double noisyAboveMedians =
        3.0;  // noise above this many medians of the channels that are not flat
    std::size_t fewestForMedian = 4;  // such channels; with fewer, none is named noisy
};

struct ChannelVerdict {
    std::uint32_t channel = 0;  // from 0
    bool flat = false;
    bool clipped = false;
    bool noisy = false;

    bool IsNamed() const { return flat || clipped || noisy; }
};

struct SignalVerdict {
    std::optional<double> medianNoiseMicrovolts;  // of channels that are not flat
    std::vector<ChannelVerdict> channels;         // in the order of the survey's statistics
};

// The share of the channel's samples at an end of the range.
[[nodiscard]] double ClippedShare(const ChannelStatistics& channel);

[[nodiscard]] SignalVerdict JudgeSignal(const RecordingSurvey& survey,
                                        const SignalRules& rules = {});

}  // namespace stalwick
