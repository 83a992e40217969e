// SPDX-License-Identifier: BSD-3-Clause
#include "survey/signal_rules.h"

#include <algorithm>

namespace stalwick {

namespace {

bool IsFlat(const ChannelStatistics& channel, const RecordingSurvey& survey,
            const SignalRules& rules) {
    const double run = static_cast<double>(channel.longestFlatRun);
    return channel.noiseMicrovolts < rules.flatBelowMicrovolts ||
           run >= rules.flatRunSeconds * survey.header.samplingFrequency;
}

// The mean of the two in the middle for an even number.
double MedianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 != 0) return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2.0;
}

}  // namespace

double ClippedShare(const ChannelStatistics& channel) {
    if (channel.samples == 0) return 0.0;
    return static_cast<double>(channel.atRangeEnds) / static_cast<double>(channel.samples);
}

SignalVerdict JudgeSignal(const RecordingSurvey& survey, const SignalRules& rules) {
    SignalVerdict verdict;
    std::vector<double> noise;
    for (const ChannelStatistics& channel : survey.channelStatistics) {
        ChannelVerdict one;
        one.channel = channel.channel;
        one.flat = IsFlat(channel, survey, rules);
        one.clipped = ClippedShare(channel) > rules.clippedAboveShare;
        if (!one.flat) noise.push_back(channel.noiseMicrovolts);
        verdict.channels.push_back(one);
    }
    if (noise.empty()) return verdict;
    const bool hasEnough = noise.size() >= rules.fewestForMedian;
    const double median = MedianOf(std::move(noise));
    verdict.medianNoiseMicrovolts = median;
    for (std::size_t i = 0; hasEnough && i < verdict.channels.size(); ++i) {
        ChannelVerdict& one = verdict.channels[i];
        one.noisy = !one.flat &&
                    survey.channelStatistics[i].noiseMicrovolts > rules.noisyAboveMedians * median;
    }
    return verdict;
}

}  // namespace stalwick
