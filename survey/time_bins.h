// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <vector>

namespace stalwick {

// Values over time in at most kMostBins bins of equal width, which doubles when time exceeds them:
// memory is the same for any length. `Bin` adds another one with Add.
template <typename Bin>
class TimeBins {
  public:
    static constexpr std::size_t kMostBins = 480;

    explicit TimeBins(double firstWidthSeconds) : widthSeconds_(firstWidthSeconds) {}

    // The bin of a non-negative time.
    Bin& At(double seconds) {
        while (seconds >= widthSeconds_ * static_cast<double>(kMostBins)) DoubleWidth();
        const auto bin = static_cast<std::size_t>(seconds / widthSeconds_);
        if (bins_.size() <= bin) bins_.resize(bin + 1);
        return bins_[bin];
    }

    double WidthSeconds() const { return widthSeconds_; }
    const std::vector<Bin>& Bins() const { return bins_; }

  private:
    void DoubleWidth() {
        widthSeconds_ *= 2.0;
        for (std::size_t i = 0; i < bins_.size(); ++i) {
            Bin bin = bins_[i];
            if (i % 2 == 0) {
                bins_[i / 2] = bin;
            } else {
                bins_[i / 2].Add(bin);
            }
        }
        bins_.resize((bins_.size() + 1) / 2);
    }

    double widthSeconds_;
    std::vector<Bin> bins_;
};

}  // namespace stalwick
