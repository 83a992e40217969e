// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>

#include "tools/ord_synth/integer_random.h"

namespace stalwick {

using ImuValues = std::array<std::uint16_t, 9>;
using UltrasonicValues = std::array<std::uint16_t, 70>;

// Nine 16-bit two's-complement values for each packet: acceleration (gravity on a head that
// sways), angular velocity of that sway, and the magnetic field while the animal turns.
class ImuSource {
  public:
    ImuSource(std::uint64_t seed, RandomStream stream, std::uint32_t packetsPerSecond);

    void Next(ImuValues& values);

  private:
    IntegerRandom random_;
    std::array<std::uint32_t, 3> phase_{};  // pitch, roll, heading
    std::array<std::uint32_t, 3> step_{};
};

// Seventy 16-bit two's-complement values for each packet: background noise and, about once a
// second, a call that sweeps upward through the ultrasonic range.
class UltrasonicSource {
  public:
    UltrasonicSource(std::uint64_t seed, std::uint32_t packetsPerSecond);

    void Next(UltrasonicValues& values);

  private:
    void StartNextPhase();

    IntegerRandom random_;
    std::uint32_t packetsPerSecond_;
    std::uint32_t packetsLeft_ = 0;  // of the call or the pause
    bool calling_ = true;            // so that the recording begins with a pause
    std::uint32_t phase_ = 0;
    std::uint32_t step_ = 0;
    std::uint32_t sweep_ = 0;  // growth of the step at every sample
};

}  // namespace stalwick
