// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace stalwick {

// The times of a channel file's records, calculated without writing them: docs/output-files.md,
// "Which clock, which zero".
class RecordClock {
  public:
    // `frequency` in samples per second; `offset` in microseconds, added modulo 2^64.
    RecordClock(double frequency, std::uint64_t offset) : frequency_(frequency), offset_(offset) {}

    // `count` samples of one packet, at most a record; its timestamp in nanoseconds.
    void Add(std::uint32_t count, std::optional<std::uint64_t> timestamp);

    // Microseconds of each record begun so far.
    const std::vector<std::uint64_t>& Times() const { return times_; }
    std::uint64_t Samples() const { return samples_; }

  private:
    void StartRecord();

    double frequency_;
    std::uint64_t offset_;
    std::vector<std::uint64_t> times_;
    std::uint64_t samples_ = 0;
    std::uint32_t inRecord_ = 0;  // samples in the last record; 0 if it is full
    std::uint64_t lastTimestamp_ = 0;
    std::uint32_t phase_ = 0;  // samples since the last new timestamp, modulo 10
    double runningTime_ = 0.0;
};

}  // namespace stalwick
