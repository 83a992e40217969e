// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace stalwick {

// The power density of signals by Welch's method: equal segments, each without its mean and under a
// periodic Hann window, whose one-sided densities are averaged.
class PowerSpectrum {
  public:
    explicit PowerSpectrum(std::size_t segmentSamples);  // even
    ~PowerSpectrum();

    std::size_t SegmentSamples() const { return window_.size(); }
    std::size_t Frequencies() const { return window_.size() / 2 + 1; }  // k * rate / segment

    // Adds a segment's density to `sums`, which has a value for each frequency; the unit is that of
    // the samples squared, times the number of segments, for a rate of 1.
    void AddSegment(std::span<const std::int16_t> samples, std::span<double> sums);

  private:
    struct Transform;
    std::vector<double> window_;
    double scale_ = 0.0;  // of a squared magnitude
    std::vector<double> windowed_;
    std::unique_ptr<Transform> transform_;
};

}  // namespace stalwick
