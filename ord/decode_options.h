#pragma once

#include <cstdint>
#include <optional>
#include <utility>

namespace stalwick {

// What decides whether packets carry a hardware timestamp: they do when the pair is present and
// its first number is 240 or more or its second, the file version number, is 20 or more.
using DecodeOptions = std::optional<std::pair<std::int32_t, std::int32_t>>;

bool PacketsCarryTimestamps(const DecodeOptions& options);

}  // namespace stalwick
