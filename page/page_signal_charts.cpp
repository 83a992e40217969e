// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cmath>

#include "page/page_chart.h"
#include "page/page_charts.h"
#include "page/page_words.h"
#include "page/shown_channels.h"

namespace stalwick {

namespace {

constexpr double kMicrovoltsPerVolt = 1e6;
constexpr std::size_t kTraceRows = 12;
constexpr double kTraceRowHeight = 26.0;  // CSS pixels

// The positions of values in a chart with logarithmic axes.
struct LogarithmicPlane {
    double lowX, highX, lowY, highY, height;

    double X(double value) const {
        return std::log10(value / lowX) / std::log10(highX / lowX) * kChartWidth;
    }
    double Y(double value) const {
        const double share = std::log10(value / lowY) / std::log10(highY / lowY);
        return (1.0 - std::clamp(share, 0.0, 1.0)) * height;
    }
};

// A line through the means of the frequencies that share a column of the picture.
SvgPath SpectrumPath(const std::vector<double>& density, double hertz,
                     const LogarithmicPlane& plane) {
    constexpr double kColumnWidth = 3.0;
    SvgPath path;
    double sum = 0.0;
    std::size_t count = 0;
    std::size_t first = 1;
    for (std::size_t k = 1; k < density.size(); ++k) {
        sum += density[k];
        ++count;
        const double here = plane.X(static_cast<double>(first) * hertz);
        const double next = plane.X(static_cast<double>(k + 1) * hertz);
        if (next - here < kColumnWidth && k + 1 < density.size()) continue;
        const double mean = sum / static_cast<double>(count);
        const double x = (here + plane.X(static_cast<double>(k) * hertz)) / 2.0;
        if (path.IsEmpty()) {
            path.MoveTo(x, plane.Y(mean));
        } else {
            path.LineTo(x, plane.Y(mean));
        }
        sum = 0.0;
        count = 0;
        first = k + 1;
    }
    return path;
}

// The powers of ten around the densities shown, eight decades at most.
void FindDensities(const PageSurvey& page, const std::vector<std::size_t>& shown,
                   LogarithmicPlane& plane) {
    constexpr double kMostDecades = 8.0;
    double lowest = 0.0;
    double highest = 0.0;
    for (const std::size_t place : shown) {
        for (const double value : page.spectra.channels[place].density) {
            if (!std::isfinite(value) || value <= 0.0) continue;
            lowest = lowest == 0.0 ? value : std::min(lowest, value);
            highest = std::max(highest, value);
        }
    }
    if (highest == 0.0) return;
    plane.highY = std::pow(10.0, std::ceil(std::log10(highest)));
    const double decades =
        std::clamp(std::ceil(std::log10(plane.highY / lowest)), 1.0, kMostDecades);
    plane.lowY = plane.highY / std::pow(10.0, decades);
}

std::string NameWithVerdict(const PageSurvey& page, std::uint32_t channel) {
    for (const ChannelVerdict& verdict : page.verdict.channels) {
        if (verdict.channel == channel && verdict.IsNamed()) {
            return ChannelName(channel) + " (" + VerdictInWords(verdict) + ")";
        }
    }
    return ChannelName(channel);
}

// The range of all columns of a trace; empty if it has none.
ColumnRange RangeOf(const TraceEnvelope& trace) {
    ColumnRange range;
    for (const ColumnRange& column : trace.columns) {
        if (!column.IsEmpty()) range.Add(column.smallest, column.largest);
    }
    return range;
}

// The height of a row in microvolts, in which more than half of the traces fit.
double RowMicrovolts(const TracePlace& place, const std::vector<std::uint32_t>& channels,
                     double microvoltsPerStep) {
    std::vector<double> heights;
    for (const TraceEnvelope& trace : place.channels) {
        if (!std::binary_search(channels.begin(), channels.end(), trace.channel)) continue;
        const ColumnRange range = RangeOf(trace);
        if (range.IsEmpty()) continue;
        heights.push_back((range.largest - range.smallest) * std::abs(microvoltsPerStep));
    }
    if (heights.empty()) return 1.0;
    std::sort(heights.begin(), heights.end());
    return std::max(heights[heights.size() / 2] * 1.1, 1.0);
}

// The position and height of a trace.
struct TraceRow {
    double middleY = 0.0;
    double height = 0.0;
    double steps = 0.0;  // of the converter, over this height
};

// The trace about its own middle, clipped to its row; broken where there are no samples.
SvgPath TracePath(const TraceEnvelope& trace, const TracePlace& place, const TraceRow& row) {
    const ColumnRange range = RangeOf(trace);
    const double middle = (range.smallest + range.largest) / 2.0;
    const auto y = [&](double value) {
        return row.middleY - std::clamp((value - middle) / row.steps, -0.5, 0.5) * row.height;
    };
    SvgPath path;
    bool isBroken = true;
    for (std::size_t i = 0; i < trace.columns.size(); ++i) {
        const ColumnRange& column = trace.columns[i];
        const double x =
            (place.scale.MiddleOf(i) - place.startSeconds) / place.seconds * kChartWidth;
        if (column.IsEmpty()) {
            isBroken = true;
            continue;
        }
        if (isBroken) {
            path.MoveTo(x, y(column.smallest));
        } else {
            path.LineTo(x, y(column.smallest));
        }
        path.LineTo(x, y(column.largest));
        isBroken = false;
    }
    return path;
}

std::string TraceChart(const PageSurvey& page, std::size_t number,
                       const std::vector<std::uint32_t>& channels) {
    const TracePlace& place = page.traces[number];
    const double step = page.survey.header.adBitVolts * kMicrovoltsPerVolt;
    const double rowMicrovolts = RowMicrovolts(place, channels, step);
    const TimeAxis axis(place.startSeconds, place.startSeconds + place.seconds);
    std::vector<const TraceEnvelope*> rows;
    for (const TraceEnvelope& trace : place.channels) {
        if (std::binary_search(channels.begin(), channels.end(), trace.channel)) {
            rows.push_back(&trace);
        }
    }
    const auto count = static_cast<double>(rows.size());
    PageChart chart;
    chart.id = "traces-" + std::to_string(number + 1);
    chart.title = "Traces at " + FixedNumber(place.startSeconds, 1) + " s";
    chart.description =
        "A row is " + ShortNumber(rowMicrovolts) + " µV high; each trace is centered in its row.";
    chart.height = kTraceRowHeight * count;
    chart.xTicks = axis.Ticks();
    chart.xTitle = axis.title;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        chart.yTicks.push_back(
            {1.0 - (static_cast<double>(i) + 0.5) / count, ChannelName(rows[i]->channel)});
    }
    SvgWriter svg = ChartPicture(chart);
    svg.OpenClippedGroup("", {0.0, 0.0, kChartWidth, chart.height});
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const double middle = (static_cast<double>(i) + 0.5) * kTraceRowHeight;
        const bool named = IsNamed(page, rows[i]->channel);
        svg.Path(
            named ? "trace named" : "trace",
            TracePath(*rows[i], place, {middle, kTraceRowHeight, rowMicrovolts / std::abs(step)}),
            ChannelName(rows[i]->channel));
    }
    svg.CloseGroup();
    chart.picture = svg.Finish();
    return FormatChart(chart);
}

}  // namespace

std::string SpectraChart(const PageSurvey& page) {
    constexpr double kHeight = 280.0;
    const std::vector<std::size_t> shown = ShownSpectra(page);
    if (shown.empty()) return {};
    const double hertz =
        page.survey.header.samplingFrequency / static_cast<double>(page.spectra.segmentSamples);
    LogarithmicPlane plane{hertz, page.survey.header.samplingFrequency / 2.0, 0.01, 1.0, kHeight};
    FindDensities(page, shown, plane);
    PageChart chart;
    chart.id = "spectra";
    chart.title = "Power density";
    chart.description =
        "In µV² per Hz, over the frequency in Hz; both axes are logarithmic. Welch's "
        "method: segments of " +
        std::to_string(page.spectra.segmentSamples) +
        " samples under a Hann window that overlap by half, from " +
        std::to_string(page.spectra.stretches.size()) + " places of the recording.";
    chart.height = kHeight;
    chart.xTicks = LogarithmicTicks(plane.lowX, plane.highX);
    chart.xTitle = "frequency (Hz)";
    chart.yTicks = LogarithmicTicks(plane.lowY, plane.highY);
    SvgWriter svg = ChartPicture(chart);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const ChannelSpectrum& spectrum = page.spectra.channels[shown[i]];
        const std::string name = NameWithVerdict(page, spectrum.channel);
        svg.Path(SeriesClass(i), SpectrumPath(spectrum.density, hertz, plane), name);
        chart.legend.push_back({name, SeriesClass(i)});
    }
    chart.picture = svg.Finish();
    return FormatChart(chart);
}

std::string TraceCharts(const PageSurvey& page) {
    if (page.survey.header.samplingFrequency == 0 || page.survey.header.adBitVolts == 0.0)
        return {};
    const std::vector<std::uint32_t> channels = ShownChannels(page, kTraceRows);
    std::string html;
    for (std::size_t i = 0; i < page.traces.size(); ++i) html += TraceChart(page, i, channels);
    return html;
}

std::string Thumbnail(const PageSurvey& page, const std::string& id) {
    constexpr std::size_t kRows = 5;
    constexpr double kHeight = 400.0;
    const double step = page.survey.header.adBitVolts * kMicrovoltsPerVolt;
    if (page.traces.empty() || step == 0.0) return {};
    const TracePlace& place = page.traces[page.traces.size() / 2];
    const std::vector<std::uint32_t> channels = ShownChannels(page, kRows);
    SvgPicture picture;
    picture.width = kChartWidth;
    picture.height = kHeight;
    picture.title = "Traces of some channels at " + FixedNumber(place.startSeconds, 1) + " s";
    picture.id = id;
    picture.stretches = true;
    SvgWriter svg(picture);
    const double steps = RowMicrovolts(place, channels, step) / std::abs(step);
    const double rowHeight =
        kHeight / static_cast<double>(std::max<std::size_t>(channels.size(), 1));
    double middle = rowHeight / 2.0;
    for (const TraceEnvelope& trace : place.channels) {
        if (!std::binary_search(channels.begin(), channels.end(), trace.channel)) continue;
        const bool named = IsNamed(page, trace.channel);
        svg.Path(named ? "trace named" : "trace",
                 TracePath(trace, place, {middle, rowHeight, steps}));
        middle += rowHeight;
    }
    return svg.Finish();
}

}  // namespace stalwick
