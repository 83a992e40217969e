// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cmath>

#include "page/page_chart.h"
#include "page/page_charts.h"
#include "page/page_words.h"
#include "page/readable_figures.h"
#include "survey/time_spans.h"

namespace stalwick {

namespace {

constexpr double kRowHeight = 22.0;    // CSS pixels
constexpr double kBarShare = 0.64;     // of a row
constexpr double kNarrowestBar = 2.0;  // of the chart's width, so that short things are visible

// The part of the width that a time span occupies.
struct Extent {
    double x = 0.0;
    double width = 0.0;
};

Extent ExtentOf(const TimeAxis& axis, double fromSeconds, double seconds) {
    const double from = axis.ShareOf(fromSeconds) * kChartWidth;
    const double to = axis.ShareOf(fromSeconds + seconds) * kChartWidth;
    const double width = std::max(to - from, kNarrowestBar);
    return {std::min(from, kChartWidth - width), width};
}

// The rows of the time line, from top to bottom.
class Rows {
  public:
    Rows(SvgWriter& svg, const TimeAxis& axis) : svg_(svg), axis_(axis) {}

    void Begin(std::size_t row) { top_ = kRowHeight * static_cast<double>(row); }
    void Bar(const std::string& cssClass, double fromSeconds, double seconds,
             const std::string& title = {}) {
        const Extent extent = ExtentOf(axis_, fromSeconds, seconds);
        constexpr double kMargin = kRowHeight * (1.0 - kBarShare) / 2.0;
        svg_.Rect(cssClass, {extent.x, top_ + kMargin, extent.width, kRowHeight * kBarShare},
                  title);
    }

  private:
    SvgWriter& svg_;
    const TimeAxis& axis_;
    double top_ = 0.0;
};

std::vector<std::size_t> UsedTtlLines(const RecordingSurvey& survey) {
    std::vector<std::size_t> lines;
    for (std::size_t line = 0; line < kTtlLines; ++line) {
        if (survey.ttlChanges[line] != 0) lines.push_back(line);
    }
    return lines;
}

// Gaps whose bars would overlap share one bar, and its title gives their number.
void AddGaps(const RecordingSurvey& survey, const TimeAxis& axis, Rows& rows) {
    const double length = axis.toSeconds - axis.fromSeconds;
    TimeSpans spans(length * kNarrowestBar / kChartWidth);
    for (const RecordingGap& gap : survey.gaps) {
        spans.Add({gap.atSeconds, gap.atSeconds + gap.seconds, 1, gap.missingSamples});
    }
    for (const TimeSpan& span : spans.Within(axis.fromSeconds, axis.toSeconds)) {
        const double seconds = span.toSeconds - span.fromSeconds;
        rows.Bar("gap", span.fromSeconds, seconds,
                 Narrow(Counted(span.count, L"gap")) + " at " + FixedNumber(span.fromSeconds, 3) +
                     " s, " + FixedNumber(seconds, 3) + " s long");
    }
}

void AddDamage(const RecordingSurvey& survey, Rows& rows) {
    constexpr std::size_t kMostBars = 500;
    const std::size_t count = std::min(survey.damage.size(), kMostBars);
    for (std::size_t i = 0; i < count; ++i) {
        const DamagedStretch& damage = survey.damage[i];
        const double seconds = survey.header.samplingFrequency == 0
                                   ? 0.0
                                   : static_cast<double>(damage.missingSamples.value_or(0)) /
                                         survey.header.samplingFrequency;
        rows.Bar("damage", damage.atSeconds.value_or(0.0), seconds,
                 "damage at byte " + std::to_string(damage.position));
    }
}

// A bar for each run of bins in which the line changed.
void AddTtlLine(const TimeBins<ActivityBin>& activity, std::size_t line, Rows& rows) {
    const std::vector<ActivityBin>& bins = activity.Bins();
    for (std::size_t i = 0; i < bins.size(); ++i) {
        if (bins[i].ttlChangedPackets[line] == 0) continue;
        const std::size_t first = i;
        while (i + 1 < bins.size() && bins[i + 1].ttlChangedPackets[line] != 0) ++i;
        const double width = activity.WidthSeconds();
        rows.Bar("ttl", static_cast<double>(first) * width,
                 static_cast<double>(i + 1 - first) * width);
    }
}

std::vector<AxisTick> RowLabels(const std::vector<std::string>& names) {
    std::vector<AxisTick> ticks;
    const auto count = static_cast<double>(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        ticks.push_back({1.0 - (static_cast<double>(i) + 0.5) / count, names[i]});
    }
    return ticks;
}

std::string DescribeTimeLine(const RecordingSurvey& survey, std::size_t lines) {
    std::string text = "The recording from its first sample to its last: " + GapsInWords(survey) +
                       ", " + DamageInWords(survey) + ". ";
    if (lines == 0) return text + "No TTL line changed.";
    return text + "Below it, when each TTL line changed.";
}

}  // namespace

std::string TimeLineChart(const PageSurvey& page) {
    const RecordingSurvey& survey = page.survey;
    const std::vector<std::size_t> lines = UsedTtlLines(survey);
    const TimeAxis axis(0.0, survey.durationSeconds);
    std::vector<std::string> names = {"recording"};
    for (const std::size_t line : lines) names.push_back("TTL " + std::to_string(line));
    PageChart chart;
    chart.id = "time-line";
    chart.title = "Time line";
    chart.description = DescribeTimeLine(survey, lines.size());
    chart.height = kRowHeight * static_cast<double>(names.size());
    chart.xTicks = axis.Ticks();
    chart.xTitle = axis.title;
    chart.yTicks = RowLabels(names);
    SvgWriter svg = ChartPicture(chart);
    Rows rows(svg, axis);
    rows.Bar("whole", 0.0, survey.durationSeconds);
    AddGaps(survey, axis, rows);
    AddDamage(survey, rows);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        rows.Begin(i + 1);
        AddTtlLine(page.activity, lines[i], rows);
    }
    chart.picture = svg.Finish();
    return FormatChart(chart);
}

std::string EventsChart(const PageSurvey& page) {
    constexpr double kSecondsPerMinute = 60.0;
    constexpr double kHeight = 130.0;
    constexpr std::size_t kTicks = 4;
    if (page.survey.ttlEvents == 0) return {};
    const double width = page.events.WidthSeconds();
    const std::vector<EventBin>& bins = page.events.Bins();
    const double minutes = width / kSecondsPerMinute;
    std::uint64_t most = 0;
    for (const EventBin& bin : bins) most = std::max(most, bin.events);
    const double highest = static_cast<double>(most) / minutes;
    const TimeAxis axis(0.0, static_cast<double>(bins.size()) * width);
    PageChart chart;
    chart.id = "events";
    chart.title = "TTL events a minute";
    chart.description = "Samples at which any TTL line changed, in each " +
                        (minutes == 1.0 ? std::string("minute")
                                        : ShortNumber(minutes) + " minutes, for each minute") +
                        "; at most " + ShortNumber(highest) + ", " +
                        std::to_string(page.survey.ttlEvents) + " in total.";
    chart.height = kHeight;
    chart.xTicks = axis.Ticks();
    chart.xTitle = axis.title;
    chart.yTicks = LinearTicks(0.0, highest * 1.05, kTicks);
    SvgWriter svg = ChartPicture(chart);
    const double barWidth = kChartWidth / static_cast<double>(bins.size());
    for (std::size_t i = 0; i < bins.size(); ++i) {
        const double height =
            static_cast<double>(bins[i].events) / minutes / (highest * 1.05) * kHeight;
        svg.Rect("bar",
                 {static_cast<double>(i) * barWidth, kHeight - height, barWidth * 0.9, height});
    }
    chart.picture = svg.Finish();
    return FormatChart(chart);
}

}  // namespace stalwick
