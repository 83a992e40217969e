// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>

namespace stalwick {

// The two numbers that define the format of the packets.
struct PacketFormat {
    std::int32_t systemNumber = 0;       // the reader passes 0
    std::int32_t fileVersionNumber = 0;  // "2.0" is 20
};

// Packets carry a hardware timestamp if a format is given and its system number is 240 or more or
// its file version number is 20 or more.
using DecodeOptions = std::optional<PacketFormat>;

[[nodiscard]] bool PacketsCarryTimestamps(const DecodeOptions& options);

}  // namespace stalwick
