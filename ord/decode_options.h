#pragma once

#include <cstdint>
#include <optional>

namespace stalwick {

// The two numbers that say of which format the packets are.
struct PacketFormat {
    std::int32_t systemNumber = 0;       // the reader gives 0
    std::int32_t fileVersionNumber = 0;  // "2.0" is 20
};

// What decides whether packets carry a hardware timestamp: they do when a format is given and its
// system number is 240 or more or its file version number is 20 or more.
using DecodeOptions = std::optional<PacketFormat>;

[[nodiscard]] bool PacketsCarryTimestamps(const DecodeOptions& options);

}  // namespace stalwick
