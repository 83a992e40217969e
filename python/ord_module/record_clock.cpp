// SPDX-License-Identifier: BSD-3-Clause
#include "python/ord_module/record_clock.h"

#include <algorithm>

#include "ord/ord_format.h"
#include "outputs/vtx_data_types.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

constexpr std::uint32_t kRecordSamples = VtxDataTypes::kSamplesPerRecord;

}  // namespace

void RecordClock::Add(std::uint32_t count, std::optional<std::uint64_t> timestamp) {
    if (timestamp && *timestamp != lastTimestamp_) {
        phase_ = 0;
        lastTimestamp_ = *timestamp;
    }
    if (inRecord_ == 0) StartRecord();
    const std::uint32_t fitting = std::min(count, kRecordSamples - inRecord_);
    phase_ = (phase_ + fitting) % kSamplesPerPacket;
    inRecord_ += fitting;
    samples_ += count;
    if (inRecord_ < kRecordSamples) return;
    inRecord_ = 0;
    if (!timestamp) runningTime_ += (kMicrosecondsPerSecond / frequency_) * kRecordSamples;
    if (fitting == count) return;
    StartRecord();
    // These do not advance the phase: the writer's rule.
    inRecord_ = count - fitting;
}

void RecordClock::StartRecord() {
    bool saturated = false;
    std::uint64_t time = TruncateToCount(runningTime_, saturated);
    if (lastTimestamp_ != 0) {
        const double nanoseconds =
            phase_ * (kNanosecondsPerSecond / frequency_) + static_cast<double>(lastTimestamp_);
        time = TruncateToCount(nanoseconds / kNanosecondsPerMicrosecond, saturated) + offset_;
    }
    times_.push_back(time);
}

}  // namespace stalwick
