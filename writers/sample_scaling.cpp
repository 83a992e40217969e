#include "writers/sample_scaling.h"

namespace stalwick {

void ScaleADSamples(std::span<std::int16_t> samples) {
    for (std::int16_t& sample : samples) {
        sample = static_cast<std::int16_t>(sample * 3190 / 65536);
    }
}

void ScaleImuValues(std::span<std::int16_t> values) {
    for (std::int16_t& value : values) value = static_cast<std::int16_t>(value / 256);
}

}  // namespace stalwick
