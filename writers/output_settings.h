#pragma once

#include <cstdint>

namespace stalwick {

// Records that a file's data count in: a recording that fails in its middle leaves the full blocks
// of so many in each file, and events are written so many at a time.
inline constexpr std::uint32_t kRecordsPerBlock = 5000;

// Whether further threads read ahead and write behind the one that converts.
enum class HelperThreads { kWhenThereAreCores, kOff, kOn };

// What a conversion does where a recording is damaged: end there, as the format has it, or go on
// after what it has to leave out.
enum class OnDamage { kStop, kSkip };

// How outputs are written; what is written of a whole recording does not depend on it.
struct OutputSettings {
    bool syncBeforeFinalHeader = true;  // a header that says "closed" never stands over lost data
    HelperThreads helperThreads = HelperThreads::kWhenThereAreCores;
    bool keepPartialBlocks = false;  // of a recording that fails in its middle: all whole records
    std::uint32_t recordsPerWrite = 0;  // for tests; 0: what was measured to be best
    OnDamage onDamage = OnDamage::kStop;
};

// Whether a recording that fails in its middle leaves all whole records: asked for, or because
// nothing is left out of what damage left.
[[nodiscard]] inline bool KeepsPartialBlocks(const OutputSettings& settings) {
    return settings.keepPartialBlocks || settings.onDamage == OnDamage::kSkip;
}

// Whether these settings mean further threads on this machine.
[[nodiscard]] bool UsesHelperThreads(const OutputSettings& settings);

}  // namespace stalwick
