// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace stalwick {

// Follows how a converter reads a stream: 50,000 bytes at a time, of which it takes the whole
// packets and carries the incomplete one over to the next span.
class SpanTracker {
  public:
    void AddPacket(std::uint64_t bytes) {
        if (spanBytes_ + bytes > kSpanBytes) spanBytes_ = 0;
        spanBytes_ += bytes;
    }

    // If a reader's last span is exactly half its buffer, it concludes that nothing was consumed
    // (it compares the valid bytes with those after the consumed ones), and fails.
    bool EndsInRefusedSpan() const { return spanBytes_ == kSpanBytes / 2; }

  private:
    static constexpr std::uint64_t kSpanBytes = 50'000;
    std::uint64_t spanBytes_ = 0;
};

}  // namespace stalwick
