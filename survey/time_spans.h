#pragma once

#include <vector>

#include "survey/trace_set.h"

namespace stalwick {

// Gathers stretches of time that come in order, at most as many as a picture can show: those nearer
// to each other than a column are one.
class TimeSpans {
  public:
    explicit TimeSpans(double columnSeconds = 0.0) : columnSeconds_(columnSeconds) {}

    void Add(const TimeSpan& span);
    // Columns are wider from now on.
    void Coarsen(double columnSeconds);

    // Those that touch the stretch, cut to it.
    [[nodiscard]] std::vector<TimeSpan> Within(double fromSeconds, double toSeconds) const;

  private:
    double columnSeconds_;
    std::vector<TimeSpan> spans_;
};

}  // namespace stalwick
