// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/synth_options.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace stalwick {

namespace {

bool ParseWholeNumber(std::string_view text, std::uint64_t& value) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end;
}

bool AddChannelRange(std::string_view range, std::vector<bool>& enabled) {
    const std::size_t dash = range.find('-');
    std::uint64_t first = 0;
    if (!ParseWholeNumber(range.substr(0, dash), first)) return false;
    std::uint64_t last = first;
    if (dash != std::string_view::npos && !ParseWholeNumber(range.substr(dash + 1), last)) {
        return false;
    }
    if (first > last || last >= enabled.size()) return false;
    std::fill(enabled.begin() + static_cast<std::ptrdiff_t>(first),
              enabled.begin() + static_cast<std::ptrdiff_t>(last) + 1, true);
    return true;
}

}  // namespace

std::uint32_t StateBytesPerPacket(const SynthOptions& options) {
    if (!options.perSampleStates) return 1;
    return options.channelCount == 256 ? 5 : kSynthSamplesPerPacket;
}

std::uint64_t PacketsInMicroseconds(std::uint64_t microseconds, std::uint32_t samplingFrequency) {
    constexpr std::uint64_t kDivisor = 1'000'000u * std::uint64_t{kSynthSamplesPerPacket};
    const std::uint64_t packets =
        (microseconds / kDivisor) * samplingFrequency +
        ((microseconds % kDivisor) * samplingFrequency + kDivisor / 2) / kDivisor;
    return std::max<std::uint64_t>(packets, 1);
}

bool ParseSecondsToMicroseconds(const std::string& text, std::uint64_t& microseconds) {
    const std::size_t point = text.find('.');
    const std::string whole = text.substr(0, point);
    std::string fraction = point == std::string::npos ? "0" : text.substr(point + 1);
    if (whole.empty() || whole.size() > 10 || fraction.empty() || fraction.size() > 6) return false;
    fraction.resize(6, '0');
    std::uint64_t seconds = 0;
    std::uint64_t rest = 0;
    if (!ParseWholeNumber(whole, seconds) || !ParseWholeNumber(fraction, rest)) return false;
    microseconds = seconds * 1'000'000u + rest;
    return true;
}

bool ParseDamagePlace(const std::string& text, SynthDamage& damage) {
    const std::size_t colon = text.find(':');
    return colon != std::string::npos && ParseWholeNumber(text.substr(0, colon), damage.position) &&
           ParseWholeNumber(text.substr(colon + 1), damage.count);
}

bool ParseChannelList(const std::string& text, std::uint32_t channelCount,
                      std::vector<std::uint32_t>& channels) {
    std::vector<bool> enabled(channelCount, false);
    std::string_view rest = text;
    for (;;) {
        const std::size_t comma = rest.find(',');
        if (!AddChannelRange(rest.substr(0, comma), enabled)) return false;
        if (comma == std::string_view::npos) break;
        rest.remove_prefix(comma + 1);
    }
    channels.clear();
    for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
        if (enabled[channel]) channels.push_back(channel);
    }
    return true;
}

}  // namespace stalwick
