// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>

#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// Takes the next bytes of the recording; returns false if it could not.
using ByteSink = std::function<bool(std::span<const std::uint8_t> bytes)>;

struct SynthSummary {
    bool complete = false;    // false: the sink refused
    bool damageMet = true;    // false: one of its places is after the recording's end
    std::uint64_t bytes = 0;  // including the header, before any damage
    std::uint64_t packets = 0;
    std::uint64_t samples = 0;  // of all enabled channels together
    std::array<std::uint64_t, 16> widthCounts{};
};

// Makes the recording and passes it to the sink in blocks of about a megabyte. It has the requested
// number of packets, or one more if a converter would refuse the length of the stream.
SynthSummary MakeRecording(const SynthOptions& options, const ByteSink& sink);

}  // namespace stalwick
