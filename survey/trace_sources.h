#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "survey/output_set.h"
#include "survey/trace_set.h"

namespace stalwick {

// A channel file that has samples, and what its header and its ends say.
struct TraceSource {
    std::wstring path;
    std::wstring session;
    std::wstring entity;             // CSC1
    std::optional<OutputName> name;  // what the entity says; none: nothing that this program makes
    double samplesPerSecond = 0.0;
    double microvoltsPerStep = 0.0;
    std::uint64_t firstMicroseconds = 0;
    double seconds = 0.0;  // from its first sample to its end
};

// The files of a request, A/D channels in their order first.
struct TraceSources {
    TraceError error;
    std::vector<TraceSource> channels;  // at least one, unless there is an error
    std::vector<std::wstring> eventFiles;
    std::vector<std::wstring> warnings;
};

// Looks at the ends of each file.
[[nodiscard]] TraceSources FindTraceSources(const TraceRequest& request);

}  // namespace stalwick
