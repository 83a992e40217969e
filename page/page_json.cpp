// SPDX-License-Identifier: BSD-3-Clause
#include "page/page_json.h"

#include <array>
#include <charconv>

#include <nlohmann/json.hpp>

#include "page/info_json.h"
#include "page/json_values.h"
#include "page/shown_channels.h"

namespace stalwick {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormatVersion = 1;
constexpr double kSecondsPerMinute = 60.0;

Json RulesOf(const SignalRules& rules) {
    return {{"flat_below_microvolts", rules.flatBelowMicrovolts},
            {"flat_run_seconds", rules.flatRunSeconds},
            {"clipped_above_share", rules.clippedAboveShare},
            {"noisy_above_medians", rules.noisyAboveMedians},
            {"fewest_channels_for_median", rules.fewestForMedian}};
}

Json ChannelsOf(const PageSurvey& page) {
    Json all = Json::array();
    for (std::size_t i = 0; i < page.verdict.channels.size(); ++i) {
        const ChannelStatistics& channel = page.survey.channelStatistics[i];
        const ChannelVerdict& verdict = page.verdict.channels[i];
        all.push_back({{"channel", channel.channel},
                       {"noise_microvolts", channel.noiseMicrovolts},
                       {"drift_microvolts_per_minute", OrNull(channel.driftMicrovoltsPerMinute)},
                       {"clipped_share", ClippedShare(channel)},
                       {"flat", verdict.flat},
                       {"clipped", verdict.clipped},
                       {"noisy", verdict.noisy}});
    }
    return all;
}

Json NamedBy(const PageSurvey& page, bool ChannelVerdict::*rule) {
    Json all = Json::array();
    for (const ChannelVerdict& verdict : page.verdict.channels) {
        if (verdict.*rule) all.push_back(verdict.channel);
    }
    return all;
}

Json StretchesOf(const SignalSpectra& spectra) {
    Json all = Json::array();
    for (const SignalSpectra::Stretch& stretch : spectra.stretches) {
        all.push_back({{"first_sample", stretch.firstSample}, {"samples", stretch.samples}});
    }
    return all;
}

// Six digits are more precise than a density; they keep the page small. Rounded as text: powers of
// ten below one are not exact, and differ between C libraries.
double Rounded(double value) {
    std::array<char, 32> text;
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value,
                                       std::chars_format::scientific, 5);
    std::from_chars(text.data(), written.ptr, value);
    return value;
}

Json SpectraOf(const PageSurvey& page) {
    Json all = Json::array();
    for (const std::size_t shown : ShownSpectra(page)) {
        const ChannelSpectrum& spectrum = page.spectra.channels[shown];
        Json density = Json::array();
        for (const double value : spectrum.density) density.push_back(Rounded(value));
        all.push_back({{"channel", spectrum.channel},
                       {"segments", spectrum.segments},
                       {"microvolts_squared_per_hertz", std::move(density)}});
    }
    return {{"window", "hann"},
            {"segment_samples", page.spectra.segmentSamples},
            {"overlap_samples", page.spectra.segmentSamples / 2},
            {"stretches", StretchesOf(page.spectra)},
            {"channels", std::move(all)}};
}

Json EventsOf(const PageSurvey& page) {
    Json counts = Json::array();
    for (const EventBin& bin : page.events.Bins()) counts.push_back(bin.events);
    return {{"minutes_a_count", page.events.WidthSeconds() / kSecondsPerMinute},
            {"counts", std::move(counts)}};
}

}  // namespace

std::string PageAsJson(const PageSurvey& page) {
    Json signal;
    signal["rules"] = RulesOf(page.rules);
    signal["median_noise_microvolts"] = OrNull(page.verdict.medianNoiseMicrovolts);
    signal["flat"] = NamedBy(page, &ChannelVerdict::flat);
    signal["clipped"] = NamedBy(page, &ChannelVerdict::clipped);
    signal["noisy"] = NamedBy(page, &ChannelVerdict::noisy);
    signal["channels"] = ChannelsOf(page);
    signal["spectra"] = SpectraOf(page);
    Json document;
    document["format_version"] = kFormatVersion;
    document["recording"] = Json::parse(SurveyAsJson(page.survey));
    document["signal"] = std::move(signal);
    document["ttl_events"] = EventsOf(page);
    return document.dump();
}

}  // namespace stalwick
