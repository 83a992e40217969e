// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>

namespace stalwick {

// The interval between the hardware timestamps of a recording's packets. It starts from the
// header's sampling frequency and then follows the packets: clocks drift, and headers can be wrong.
class StepClock {
  public:
    // `samplingFrequency` in samples per second; 0: only the packets determine it.
    explicit StepClock(std::uint32_t samplingFrequency = 0);

    // Takes the timestamps (ns) of two consecutive packets.
    void Learn(std::uint64_t from, std::uint64_t to);

    // How many packets later `to` is, if that is a whole number of at least one.
    [[nodiscard]] std::optional<std::uint64_t> WholeSteps(std::uint64_t from,
                                                          std::uint64_t to) const;

    [[nodiscard]] double StepNs() const { return stepNs_; }  // 0: unknown

  private:
    void Restart(double stepNs);

    double nominalNs_ = 0.0;
    double stepNs_ = 0.0;
    std::uint64_t sumNs_ = 0;  // of the steps near nominalNs_
    std::uint64_t count_ = 0;
    std::uint64_t lastRegularNs_ = 0;  // the last step near nominalNs_
    std::uint64_t lastStepNs_ = 0;     // the last other one
    unsigned alike_ = 0;  // consecutive steps as long as each other and not near nominalNs_
};

}  // namespace stalwick
