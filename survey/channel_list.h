// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace stalwick {

// "1-16,33" as channels from 0, ascending, without duplicates. None for anything else: a channel
// below 1 or above `most`, or a descending range.
[[nodiscard]] std::optional<std::vector<std::uint32_t>> ReadChannelList(std::string_view text,
                                                                        std::uint32_t most);

}  // namespace stalwick
