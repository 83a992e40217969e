#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>

#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// Takes the next bytes of the recording; false when it could not.
using ByteSink = std::function<bool(std::span<const std::uint8_t> bytes)>;

struct SynthSummary {
    bool complete = false;    // false: the sink refused
    bool damageMet = true;    // false: a place of it is behind the recording's end
    std::uint64_t bytes = 0;  // header included, before any damage
    std::uint64_t packets = 0;
    std::uint64_t samples = 0;  // of all enabled channels together
    std::array<std::uint64_t, 16> widthCounts{};
};

// Makes the recording and hands it to the sink in blocks of about a megabyte. It has the packets
// asked for, or one more where a converter would refuse the length of the stream.
SynthSummary MakeRecording(const SynthOptions& options, const ByteSink& sink);

}  // namespace stalwick
