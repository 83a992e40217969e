#pragma once

#include <cstdint>
#include <optional>

namespace stalwick {

// How far apart the hardware timestamps of a recording's packets are. Begins with what the header's
// sampling frequency says and goes on with what the packets show: clocks drift, headers err.
class StepClock {
  public:
    // `samplingFrequency` in samples per second; 0: only the packets can tell.
    explicit StepClock(std::uint32_t samplingFrequency = 0);

    // Takes the timestamps (ns) of two packets, one right after the other.
    void Learn(std::uint64_t from, std::uint64_t to);

    // How many packets later `to` is, when that is a whole number of at least one.
    [[nodiscard]] std::optional<std::uint64_t> WholeSteps(std::uint64_t from,
                                                          std::uint64_t to) const;

    [[nodiscard]] double StepNs() const { return stepNs_; }  // 0: not known

  private:
    void Restart(double stepNs);

    double nominalNs_ = 0.0;
    double stepNs_ = 0.0;
    std::uint64_t sumNs_ = 0;  // of the steps near nominalNs_
    std::uint64_t count_ = 0;
    std::uint64_t lastRegularNs_ = 0;  // the last step near nominalNs_
    std::uint64_t lastStepNs_ = 0;     // the last other one
    unsigned alike_ = 0;  // steps in a row that are as long as each other and not near nominalNs_
};

}  // namespace stalwick
