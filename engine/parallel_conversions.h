// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/processor_count.h"

namespace stalwick {

// The conversions that a process runs at the same time, and the cores that they leave for helper
// threads. Any thread may call any operation.
class ParallelConversions {
  public:
    // At most `most` at a time, each on its own core if there are enough.
    explicit ParallelConversions(std::uint32_t most, std::uint32_t cores = UsableProcessors())
        : most_(most), freeCores_(std::int64_t{cores} - most) {}

    // Their files are open at the same time.
    [[nodiscard]] std::uint32_t MostAtOnce() const { return most_; }

    // Whether a core was free; if so, the caller's helper threads use it until they release it.
    [[nodiscard]] bool TryTakeCore() {
        std::int64_t free = freeCores_.load(std::memory_order_relaxed);
        while (free > 0) {
            if (freeCores_.compare_exchange_weak(free, free - 1, std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }
    // Call it when helper threads have ended, or when a job finds no further recording.
    void ReleaseCore() { freeCores_.fetch_add(1, std::memory_order_relaxed); }

  private:
    std::uint32_t most_;
    std::atomic<std::int64_t> freeCores_;  // negative if there are more threads than cores
};

}  // namespace stalwick
