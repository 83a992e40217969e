// SPDX-License-Identifier: BSD-3-Clause
#include "survey/power_spectrum.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>

#include <kissfft/kissfft.hh>

namespace stalwick {

struct PowerSpectrum::Transform {
    // For half as many complex values as there are real samples.
    explicit Transform(std::size_t samples) : fft(samples / 2, false), result(samples / 2) {}

    kissfft<double> fft;
    std::vector<std::complex<double>> result;
};

PowerSpectrum::PowerSpectrum(std::size_t segmentSamples)
    : window_(segmentSamples),
      windowed_(segmentSamples),
      transform_(std::make_unique<Transform>(segmentSamples)) {
    double squares = 0.0;
    for (std::size_t i = 0; i < segmentSamples; ++i) {
        const double turn = static_cast<double>(i) / static_cast<double>(segmentSamples);
        window_[i] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * turn);
        squares += window_[i] * window_[i];
    }
    scale_ = 1.0 / squares;
}

PowerSpectrum::~PowerSpectrum() = default;

void PowerSpectrum::AddSegment(std::span<const std::int16_t> samples, std::span<double> sums) {
    const std::size_t count = window_.size();
    const std::int64_t sum = std::accumulate(samples.begin(), samples.end(), std::int64_t{0});
    const double mean = static_cast<double>(sum) / static_cast<double>(count);
    for (std::size_t i = 0; i < count; ++i) windowed_[i] = (samples[i] - mean) * window_[i];
    std::vector<std::complex<double>>& result = transform_->result;
    transform_->fft.transform_real(windowed_.data(), result.data());
    // The transform stores the real value of half the rate next to that of 0.
    sums[0] += result[0].real() * result[0].real() * scale_;
    sums[count / 2] += result[0].imag() * result[0].imag() * scale_;
    // In between, negative frequencies count too.
    for (std::size_t k = 1; k < count / 2; ++k) sums[k] += 2.0 * std::norm(result[k]) * scale_;
}

}  // namespace stalwick
