// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace stalwick {

// The number of records by which a file's data count: a recording that fails in the middle leaves
// only full blocks of this size in each file, and events are written in such blocks.
inline constexpr std::uint32_t kRecordsPerBlock = 5000;

// Whether helper threads read ahead of the converting thread and write after it. The cores meant
// are those that no other conversion of this process uses.
enum class HelperThreads { kWhenThereAreCores, kOff, kOn };

// What a conversion does at damage in a recording: end there, as the format prescribes, or continue
// after what it has to leave out.
enum class OnDamage { kStop, kSkip };

// How outputs are written; the outputs of a whole recording do not depend on it.
struct OutputSettings {
    bool syncBeforeFinalHeader = true;  // a header that says "closed" never precedes lost data
    HelperThreads helperThreads = HelperThreads::kWhenThereAreCores;
    bool keepPartialBlocks = false;  // for a recording that fails in the middle: all whole records
    std::uint32_t recordsPerWrite = 0;  // for tests; 0: the best value measured
    OnDamage onDamage = OnDamage::kStop;
};

// Whether a recording that fails in the middle leaves all whole records: requested, or because
// damage is skipped anyway.
[[nodiscard]] inline bool KeepsPartialBlocks(const OutputSettings& settings) {
    return settings.keepPartialBlocks || settings.onDamage == OnDamage::kSkip;
}

}  // namespace stalwick
