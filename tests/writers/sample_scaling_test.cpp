// SPDX-License-Identifier: BSD-3-Clause
#include "writers/sample_scaling.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

// Every 16-bit value, in vectors of lengths that leave each possible rest after wide steps.
std::vector<std::int16_t> EveryValue(std::size_t extra) {
    std::vector<std::int16_t> values;
    for (std::int32_t value = INT16_MIN; value <= INT16_MAX; ++value) {
        values.push_back(static_cast<std::int16_t>(value));
    }
    values.resize(values.size() + extra, -1);
    return values;
}

TEST(SampleScaling, EveryADSampleIsTheProductTruncatedTowardZero) {
    for (std::size_t extra = 0; extra < 33; ++extra) {
        const std::vector<std::int16_t> samples = EveryValue(extra);
        std::vector<std::int16_t> scaled = samples;
        ScaleADSamples(scaled);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            ASSERT_EQ(scaled[i], std::trunc(samples[i] * 0.048675537109375)) << samples[i];
        }
    }
}

TEST(SampleScaling, EveryInertialValueIsTheQuotientTruncatedTowardZero) {
    const std::vector<std::int16_t> values = EveryValue(5);
    std::vector<std::int16_t> scaled = values;
    ScaleImuValues(scaled);
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(scaled[i], std::trunc(values[i] * 0.00390625)) << values[i];
    }
}

TEST(SampleScaling, EveryRawSampleIsTheProductTruncatedTowardZero) {
    for (const std::int16_t sample : EveryValue(0)) {
        ASSERT_EQ(ScaleRawSample(sample), std::trunc(sample * 12.4609375)) << sample;
    }
}

TEST(SampleScaling, KnownValues) {
    std::vector<std::int16_t> samples = {1000, -1000, 0, 20, 21, -20, -21, 32767, -32768};
    ScaleADSamples(samples);
    EXPECT_EQ(samples, (std::vector<std::int16_t>{48, -48, 0, 0, 1, 0, -1, 1594, -1595}));
    EXPECT_EQ(ScaleRawSample(32764), 408270);
    EXPECT_EQ(ScaleRawSample(-32768), -408320);
}

}  // namespace
}  // namespace stalwick
