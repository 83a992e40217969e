// SPDX-License-Identifier: BSD-3-Clause
#include "engine/span_reader.h"

#include <exception>

namespace stalwick {

void SpanReader::ReadAhead() {
    try {
        thread_ = std::thread([this] { Work(); });
    } catch (const std::exception&) {
        // No thread, or no memory for it, is available: Next() reads.
    }
}

SpanReader::~SpanReader() {
    if (!thread_.joinable()) return;
    {
        const std::scoped_lock lock(mutex_);
        stopping_ = true;
    }
    room_.notify_one();
    thread_.join();
}

void SpanReader::Read(DecodedSpan& span) noexcept {
    try {
        source_.Read(span);
    } catch (...) {
        span.status = -1;
        span.exception = std::current_exception();
    }
}

void SpanReader::Work() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        DecodedSpan& span = spans_[read_ % spans_.size()];
        lock.unlock();
        Read(span);
        lock.lock();
        ++read_;
        available_.notify_one();
        if (span.IsLast()) return;
        if (read_ - given_ < kMostAhead) continue;
        room_.wait(lock, [this] { return stopping_ || read_ - given_ <= kFewAhead; });
    }
}

DecodedSpan& SpanReader::Next() {
    DecodedSpan* span = &spans_.front();
    if (thread_.joinable()) {
        std::unique_lock lock(mutex_);
        available_.wait(lock, [this] { return given_ < read_; });
        span = &spans_[given_ % spans_.size()];
        ++given_;
        if (read_ - given_ == kFewAhead) room_.notify_one();
    } else {
        Read(*span);
    }
    if (span->exception) std::rethrow_exception(span->exception);
    return *span;
}

}  // namespace stalwick
