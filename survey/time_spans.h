// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <vector>

#include "survey/trace_set.h"

namespace stalwick {

// Gathers stretches of time that arrive in order, at most as many as a picture can show: those less
// than a column apart are merged.
class TimeSpans {
  public:
    explicit TimeSpans(double columnSeconds = 0.0) : columnSeconds_(columnSeconds) {}

    void Add(const TimeSpan& span);
    // Columns are wider from now on.
    void Coarsen(double columnSeconds);

    // Those that overlap the stretch, cut to it.
    [[nodiscard]] std::vector<TimeSpan> Within(double fromSeconds, double toSeconds) const;

  private:
    double columnSeconds_;
    std::vector<TimeSpan> spans_;
};

}  // namespace stalwick
