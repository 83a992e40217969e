#pragma once

#include <cstdint>

namespace stalwick {

// Records that a writer collects before it hands them on in one call.
inline constexpr std::uint32_t kRecordsPerBlock = 5000;

// Whether further threads read ahead and write behind the one that converts.
enum class HelperThreads { kWhenThereAreCores, kOff, kOn };

// How outputs are written; what is written does not depend on it.
struct OutputSettings {
    std::uint32_t recordsPerBlock = kRecordsPerBlock;  // 1 to 5000
    bool syncBeforeFinalHeader = true;  // a header that says "closed" never stands over lost data
    HelperThreads helperThreads = HelperThreads::kWhenThereAreCores;
    std::uint32_t conversionsAtOnce = 1;  // by this process: their files are open together
};

// Whether these settings mean further threads on this machine.
bool UsesHelperThreads(const OutputSettings& settings);

}  // namespace stalwick
