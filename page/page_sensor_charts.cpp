// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>

#include "page/page_chart.h"
#include "page/page_charts.h"

namespace stalwick {

namespace {

constexpr double kHeight = 140.0;
constexpr std::size_t kTicks = 4;

// A value for each bin; NaN if a bin has none.
struct Series {
    std::string name;
    std::vector<double> values;
};

struct SensorChart {
    std::string id;
    std::string title;
    std::string description;
    std::vector<Series> series;
};

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// With a little room on both sides; a constant is in the middle.
std::array<double, 2> RangeOf(const std::vector<Series>& all) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const Series& series : all) {
        for (const double value : series.values) {
            if (std::isnan(value)) continue;
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    const double room = std::max((high - low) * 0.05, 1.0);
    return {low - room, high + room};
}

SvgPath PathOf(const Series& series, std::array<double, 2> range, double binWidth) {
    SvgPath path;
    bool isBroken = true;
    for (std::size_t i = 0; i < series.values.size(); ++i) {
        const double value = series.values[i];
        if (std::isnan(value)) {
            isBroken = true;
            continue;
        }
        const double x = (static_cast<double>(i) + 0.5) * binWidth;
        const double y = (1.0 - (value - range[0]) / (range[1] - range[0])) * kHeight;
        if (isBroken) {
            path.MoveTo(x, y);
        } else {
            path.LineTo(x, y);
        }
        isBroken = false;
    }
    return path;
}

std::string FormatSensorChart(const SensorChart& sensor, const TimeAxis& axis) {
    const std::array<double, 2> range = RangeOf(sensor.series);
    if (!std::isfinite(range[0])) return {};
    PageChart chart;
    chart.id = sensor.id;
    chart.title = sensor.title;
    chart.description = sensor.description;
    chart.height = kHeight;
    chart.xTicks = axis.Ticks();
    chart.xTitle = axis.title;
    chart.yTicks = LinearTicks(range[0], range[1], kTicks);
    SvgWriter svg = ChartPicture(chart);
    for (std::size_t i = 0; i < sensor.series.size(); ++i) {
        const Series& series = sensor.series[i];
        const double binWidth = kChartWidth / static_cast<double>(series.values.size());
        svg.Path(SeriesClass(i), PathOf(series, range, binWidth), series.name);
        if (sensor.series.size() > 1) chart.legend.push_back({series.name, SeriesClass(i)});
    }
    chart.picture = svg.Finish();
    return FormatChart(chart);
}

struct ImuUnit {
    const char* id;
    const char* name;
    ImuBin ActivityBin::*bin;
};

struct ImuGroup {
    const char* id;
    const char* what;
    std::size_t first;  // of its three values
};

std::string ImuChart(const TimeBins<ActivityBin>& activity, const ImuUnit& unit,
                     const ImuGroup& group, const TimeAxis& axis) {
    constexpr std::array<const char*, 3> kAxes = {"X", "Y", "Z"};
    SensorChart chart;
    chart.id = std::string(unit.id) + '-' + group.id;
    chart.title = std::string(unit.name) + ": " + group.what;
    chart.description =
        "Means of " + ShortNumber(activity.WidthSeconds()) + " s, in the unit's counts.";
    for (std::size_t i = 0; i < kAxes.size(); ++i) {
        Series series{kAxes[i], {}};
        for (const ActivityBin& bin : activity.Bins()) {
            const ImuBin& imu = bin.*unit.bin;
            series.values.push_back(imu.packets == 0 ? kNone : imu.Mean(group.first + i));
        }
        chart.series.push_back(std::move(series));
    }
    return FormatSensorChart(chart, axis);
}

std::string UltrasonicChart(const TimeBins<ActivityBin>& activity, const TimeAxis& axis) {
    SensorChart chart;
    chart.id = "ultrasonic";
    chart.title = "Ultrasonic level";
    chart.description =
        "RMS of " + ShortNumber(activity.WidthSeconds()) + " s, in the block's counts.";
    Series series{"RMS", {}};
    for (const ActivityBin& bin : activity.Bins()) {
        series.values.push_back(bin.ultrasonicSamples == 0
                                    ? kNone
                                    : std::sqrt(static_cast<double>(bin.ultrasonicSquares) /
                                                static_cast<double>(bin.ultrasonicSamples)));
    }
    chart.series.push_back(std::move(series));
    return FormatSensorChart(chart, axis);
}

}  // namespace

std::string SensorCharts(const PageSurvey& page) {
    constexpr std::array<ImuUnit, 2> kUnits = {
        {{"base-imu", "Base inertial unit", &ActivityBin::baseImu},
         {"afe-imu", "Front-end inertial unit", &ActivityBin::afeImu}}};
    constexpr std::array<ImuGroup, 3> kGroups = {{{"acceleration", "linear acceleration", 0},
                                                  {"rotation", "angular velocity", 3},
                                                  {"field", "magnetic field", 6}}};
    const TimeBins<ActivityBin>& activity = page.activity;
    const TimeAxis axis(0.0, static_cast<double>(activity.Bins().size()) * activity.WidthSeconds());
    std::string html;
    for (const ImuUnit& unit : kUnits) {
        for (const ImuGroup& group : kGroups) html += ImuChart(activity, unit, group, axis);
    }
    return html + UltrasonicChart(activity, axis);
}

}  // namespace stalwick
