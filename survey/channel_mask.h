// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <vector>

namespace stalwick {

// Whether packets with this mask have samples of a channel; an empty mask enables all. Channel j's
// bit is in mask byte K/8 - 1 - j/8.
inline bool IsChannelRecorded(const std::vector<std::uint8_t>& mask, std::size_t channel) {
    if (mask.empty()) return true;
    const std::size_t byte = channel / 8;
    return byte < mask.size() &&
           (unsigned{mask[mask.size() - 1 - byte]} >> (channel % 8) & 1U) != 0;
}

}  // namespace stalwick
