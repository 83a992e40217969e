// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "survey/output_set.h"
#include "survey/trace_set.h"

namespace stalwick {

// A channel file that has samples, with what its header and its ends show.
struct TraceSource {
    std::wstring path;
    std::wstring session;
    std::wstring entity;             // CSC1
    std::optional<OutputName> name;  // from the entity; none: not an entity of this program
    double samplesPerSecond = 0.0;
    double microvoltsPerStep = 0.0;
    std::uint64_t firstMicroseconds = 0;
    double seconds = 0.0;  // from its first sample to its end
};

// The files of a request, with A/D channels first, in order.
struct TraceSources {
    TraceError error;
    std::vector<TraceSource> channels;  // at least one, unless there is an error
    std::vector<std::wstring> eventFiles;
    std::vector<std::wstring> warnings;
};

// Reads the ends of each file.
[[nodiscard]] TraceSources FindTraceSources(const TraceRequest& request);

}  // namespace stalwick
