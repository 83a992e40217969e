// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "page/page_numbers.h"
#include "survey/svg_writer.h"

namespace stalwick {

// A chart of a page. Its shapes are a picture that scales to any width; its labels are text next to
// the picture, so that they keep their size on a phone and on paper.
struct PageChart {
    std::string id;
    std::string title;
    std::string description;  // below the title, and for screen readers
    double height = 0.0;      // CSS pixels of the drawing area
    std::vector<AxisTick> xTicks;
    std::string xTitle;
    std::vector<AxisTick> yTicks;  // from below
    std::string picture;           // from ChartPicture
    struct LegendEntry {
        std::string name;
        std::string cssClass;  // of its line
    };
    std::vector<LegendEntry> legend;
};

inline constexpr double kChartWidth = 1000.0;  // of every picture, for any width

// The picture for a chart, with its grid.
[[nodiscard]] SvgWriter ChartPicture(const PageChart& chart);

// The chart as a <figure>.
[[nodiscard]] std::string FormatChart(const PageChart& chart);

// The class of the n-th line in a chart, from 0.
[[nodiscard]] std::string SeriesClass(std::size_t number);
inline constexpr std::size_t kMostSeries = 6;

}  // namespace stalwick
