// SPDX-License-Identifier: BSD-3-Clause
#include "writers/sample_scaling.h"

namespace stalwick {

void ScaleADSamples(std::span<std::int16_t> samples) {
    // The upper half of the product is the quotient rounded down: one is added to a negative
    // quotient that is not an integer; the only integer one is that of -32768. Compilers turn this
    // form into vector instructions.
    for (std::int16_t& sample : samples) {
        const auto high = static_cast<std::int16_t>((sample * 3190) >> 16);
        const bool roundsUp = sample < 0 && sample != INT16_MIN;
        sample = static_cast<std::int16_t>(high + (roundsUp ? 1 : 0));
    }
}

void ScaleImuValues(std::span<std::int16_t> values) {
    for (std::int16_t& value : values) value = static_cast<std::int16_t>(value / 256);
}

}  // namespace stalwick
