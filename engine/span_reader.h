// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <thread>

#include "engine/packet_source.h"

namespace stalwick {

// Returns the spans of an open recording in order: each is read on request, or, from ReadAhead on,
// a second thread reads and decodes a few spans ahead while the caller works on the current one.
class SpanReader {
  public:
    explicit SpanReader(PacketSource& source) : source_(source) {}
    // Waits for the span that is being read.
    ~SpanReader();
    SpanReader(const SpanReader&) = delete;
    SpanReader& operator=(const SpanReader&) = delete;

    // Starts the second thread; the caller's span is no longer valid. Call it at most once, and not
    // after the last span. If no thread is available, spans are still read on request.
    void ReadAhead();

    // The next span; it belongs to the caller until the next call. Throws any exception from
    // reading it. There is none after a span that IsLast(); only then may the caller use the source
    // itself again.
    DecodedSpan& Next();

  private:
    static constexpr std::size_t kMostAhead = 8;
    // Reading continues once at most this many are left, so that the threads seldom wake each
    // other.
    static constexpr std::size_t kFewAhead = 4;

    void Read(DecodedSpan& span) noexcept;
    void Work();

    PacketSource& source_;
    std::array<DecodedSpan, kMostAhead + 1> spans_;  // in turns; one is the caller's
    std::mutex mutex_;
    std::condition_variable available_;
    std::condition_variable room_;
    std::size_t read_ = 0;   // spans so far
    std::size_t given_ = 0;  // spans so far
    bool stopping_ = false;
    std::thread thread_;  // last: it uses everything above
};

}  // namespace stalwick
