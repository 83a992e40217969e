// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>

#include "survey/finding_log.h"

namespace stalwick {

// The number of samples of a channel missing between records whose first samples have these times,
// where the first record has that many samples; none if rounding and drift of the clock explain the
// times.
[[nodiscard]] std::optional<double> MissingBetween(std::uint64_t fromMicroseconds,
                                                   std::uint64_t toMicroseconds,
                                                   std::uint64_t samples, double samplesPerSecond);

// Follows the times of a file's records, in microseconds. An offset is added to them modulo 2^64,
// so they may pass that end.
class TimeSteps {
  public:
    // `samplesPerSecond` 0: does not look for gaps.
    TimeSteps(double samplesPerSecond, VerifiedSet& set, FindingLog& log)
        : samplesPerSecond_(samplesPerSecond), set_(set), log_(log) {}

    // A time earlier than that of the last call is a finding.
    void CheckOrder(std::uint64_t time, const FindingPlace& place);
    // `samples` of a channel lie between this time and that of the last call; more time between
    // them is a gap.
    void CheckGap(std::uint64_t time, std::uint64_t samples, const FindingPlace& place);
    // The next record does not follow.
    void Break();

  private:
    double samplesPerSecond_;
    VerifiedSet& set_;
    FindingLog& log_;
    std::optional<std::uint64_t> last_;
    std::optional<std::uint64_t> lastOfGap_;
};

}  // namespace stalwick
