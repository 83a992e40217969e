// SPDX-License-Identifier: BSD-3-Clause
#include "page/shown_channels.h"

#include <algorithm>

namespace stalwick {

namespace {

constexpr std::size_t kMostSpectra = 6;

// Channels that are named or not, from the quietest to the noisiest.
std::vector<std::uint32_t> ByNoise(const PageSurvey& page, bool named) {
    std::vector<const ChannelStatistics*> chosen;
    for (const ChannelStatistics& channel : page.survey.channelStatistics) {
        if (IsNamed(page, channel.channel) == named) chosen.push_back(&channel);
    }
    std::stable_sort(chosen.begin(), chosen.end(),
                     [](const ChannelStatistics* a, const ChannelStatistics* b) {
                         return a->noiseMicrovolts < b->noiseMicrovolts;
                     });
    std::vector<std::uint32_t> channels;
    for (const ChannelStatistics* const channel : chosen) channels.push_back(channel->channel);
    return channels;
}

// This many of them from the first to the last, evenly spaced.
void AddSpread(const std::vector<std::uint32_t>& from, std::size_t count,
               std::vector<std::uint32_t>& to) {
    count = std::min(count, from.size());
    for (std::size_t i = 0; i < count; ++i) {
        to.push_back(from[count == 1 ? from.size() / 2 : i * (from.size() - 1) / (count - 1)]);
    }
}

}  // namespace

bool IsNamed(const PageSurvey& page, std::uint32_t channel) {
    return std::any_of(page.verdict.channels.begin(), page.verdict.channels.end(),
                       [channel](const ChannelVerdict& verdict) {
                           return verdict.channel == channel && verdict.IsNamed();
                       });
}

std::vector<std::uint32_t> ShownChannels(const PageSurvey& page, std::size_t most) {
    std::vector<std::uint32_t> channels;
    AddSpread(ByNoise(page, true), most / 2, channels);
    AddSpread(ByNoise(page, false), most - channels.size(), channels);
    std::sort(channels.begin(), channels.end());
    return channels;
}

std::vector<std::size_t> ShownSpectra(const PageSurvey& page) {
    std::vector<std::size_t> places;
    const std::vector<std::uint32_t> channels = ShownChannels(page, kMostSpectra);
    for (std::size_t i = 0; i < page.spectra.channels.size(); ++i) {
        if (std::binary_search(channels.begin(), channels.end(),
                               page.spectra.channels[i].channel)) {
            places.push_back(i);
        }
    }
    return places;
}

}  // namespace stalwick
