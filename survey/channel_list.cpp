// SPDX-License-Identifier: BSD-3-Clause
#include "survey/channel_list.h"

#include <charconv>

namespace stalwick {

namespace {

std::optional<std::uint32_t> ReadChannel(std::string_view text, std::uint32_t most) {
    std::uint32_t channel = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, channel);
    if (error != std::errc() || stop != end || channel < 1 || channel > most) return std::nullopt;
    return channel;
}

}  // namespace

std::optional<std::vector<std::uint32_t>> ReadChannelList(std::string_view text,
                                                          std::uint32_t most) {
    std::vector<bool> isIn(most);
    for (;;) {
        const std::size_t comma = text.find(',');
        const std::string_view range = text.substr(0, comma);
        const std::size_t dash = range.find('-');
        const auto first = ReadChannel(range.substr(0, dash), most);
        const auto last =
            dash == std::string_view::npos ? first : ReadChannel(range.substr(dash + 1), most);
        if (!first || !last || *first > *last) return std::nullopt;
        for (std::uint32_t channel = *first; channel <= *last; ++channel) isIn[channel - 1] = true;
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
    }
    std::vector<std::uint32_t> channels;
    for (std::uint32_t channel = 0; channel < most; ++channel) {
        if (isIn[channel]) channels.push_back(channel);
    }
    return channels;
}

}  // namespace stalwick
