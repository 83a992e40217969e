// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <span>

namespace stalwick {

// Scales recorded 16-bit values to those of the outputs, exact in integers and truncated toward
// zero.

// A/D samples of a channel file: times 3190/65536.
void ScaleADSamples(std::span<std::int16_t> samples);

// Values of an inertial unit: times 1/256.
void ScaleImuValues(std::span<std::int16_t> values);

// A/D sample of the raw data file: times 3190/256.
[[nodiscard]] constexpr std::int32_t ScaleRawSample(std::int16_t sample) {
    return sample * 3190 / 256;
}

}  // namespace stalwick
