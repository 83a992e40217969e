#pragma once

#include <cstdint>

namespace stalwick {

// Follows how a converter reads a stream: 50,000 bytes at a time, of which it takes the whole
// packets and carries the cut one over to the next span.
class SpanTracker {
  public:
    void AddPacket(std::uint64_t bytes) {
        if (spanBytes_ + bytes > kSpanBytes) spanBytes_ = 0;
        spanBytes_ += bytes;
    }

    // A reader takes a last span of just half its buffer for one of which nothing was consumed
    // (it compares the valid bytes with those behind the consumed ones), and fails.
    bool EndsInRefusedSpan() const { return spanBytes_ == kSpanBytes / 2; }

  private:
    static constexpr std::uint64_t kSpanBytes = 50'000;
    std::uint64_t spanBytes_ = 0;
};

}  // namespace stalwick
