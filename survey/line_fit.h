// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>

namespace stalwick {

// The least-squares line through points that arrive one by one. Keeps only their means and spreads,
// which stays exact for values far from 0.
class LineFit {
  public:
    void Add(double x, double y) {
        ++points_;
        const double share = 1.0 / static_cast<double>(points_);
        const double fromMeanX = x - meanX_;
        meanX_ += fromMeanX * share;
        meanY_ += (y - meanY_) * share;
        spreadX_ += fromMeanX * (x - meanX_);
        spreadXY_ += fromMeanX * (y - meanY_);
    }

    // None for fewer than two places.
    std::optional<double> Slope() const {
        if (spreadX_ <= 0.0) return std::nullopt;
        return spreadXY_ / spreadX_;
    }

  private:
    std::uint64_t points_ = 0;
    double meanX_ = 0.0;
    double meanY_ = 0.0;
    double spreadX_ = 0.0;
    double spreadXY_ = 0.0;
};

}  // namespace stalwick
