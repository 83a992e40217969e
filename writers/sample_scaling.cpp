#include "writers/sample_scaling.h"

namespace stalwick {

void ScaleADSamples(std::span<std::int16_t> samples) {
    // Product and rounding in the form that compilers turn into vector instructions: the shift
    // rounds down, so one is added to a negative result that is not whole.
    for (std::int16_t& sample : samples) {
        const std::int32_t product = sample * 3190;
        const auto high = static_cast<std::int16_t>(product >> 16);
        const auto low = static_cast<std::int16_t>(product);
        const auto roundUp = static_cast<std::int16_t>(sample < 0 && low != 0 ? 1 : 0);
        sample = static_cast<std::int16_t>(high + roundUp);
    }
}

void ScaleImuValues(std::span<std::int16_t> values) {
    for (std::int16_t& value : values) value = static_cast<std::int16_t>(value / 256);
}

}  // namespace stalwick
