// SPDX-License-Identifier: BSD-3-Clause
#include "page/page_chart.h"

#include "survey/svg_number.h"

namespace stalwick {

namespace {

constexpr double kPercent = 100.0;

std::string Percent(double share) {
    return FixedNumber(share * kPercent, 2) + '%';
}

std::string FormatYLabels(const PageChart& chart) {
    std::string html = "<div class=\"ylabels\" aria-hidden=\"true\">";
    for (const AxisTick& tick : chart.yTicks) {
        html += "<span style=\"bottom:" + Percent(tick.share) + "\">" + EscapeXml(tick.label) +
                "</span>";
    }
    return html + "</div>";
}

// A label is centered on its position; at an end of the axis it is inside.
std::string LabelShift(double share) {
    constexpr double kNearEnd = 0.04;
    if (share < kNearEnd) return "0";
    return share > 1.0 - kNearEnd ? "-100%" : "-50%";
}

std::string FormatXLabels(const PageChart& chart) {
    std::string html = "<div class=\"xlabels\" aria-hidden=\"true\">";
    for (const AxisTick& tick : chart.xTicks) {
        html += "<span style=\"left:" + Percent(tick.share) + ";transform:translateX(" +
                LabelShift(tick.share) + ")\">" + EscapeXml(tick.label) + "</span>";
    }
    html += "</div>";
    if (!chart.xTitle.empty()) {
        html += "<p class=\"axis\" aria-hidden=\"true\">" + EscapeXml(chart.xTitle) + "</p>";
    }
    return html;
}

std::string FormatLegend(const PageChart& chart) {
    if (chart.legend.empty()) return {};
    std::string html = "<ul class=\"legend\">";
    for (const PageChart::LegendEntry& entry : chart.legend) {
        html += "<li><svg width=\"28\" height=\"10\" aria-hidden=\"true\"><path class=\"" +
                entry.cssClass + "\" d=\"M0 5h28\"/></svg>" + EscapeXml(entry.name) + "</li>";
    }
    return html + "</ul>";
}

}  // namespace

SvgWriter ChartPicture(const PageChart& chart) {
    SvgPicture picture;
    picture.width = kChartWidth;
    picture.height = chart.height;
    picture.title = chart.title;
    picture.description = chart.description;
    picture.id = chart.id + "-picture";
    picture.stretches = true;
    SvgWriter svg(picture);
    for (const AxisTick& tick : chart.xTicks) {
        const double x = tick.share * kChartWidth;
        svg.Line("grid", {x, 0.0}, {x, chart.height});
    }
    for (const AxisTick& tick : chart.yTicks) {
        const double y = (1.0 - tick.share) * chart.height;
        svg.Line("grid", {0.0, y}, {kChartWidth, y});
    }
    return svg;
}

std::string FormatChart(const PageChart& chart) {
    return "<figure class=\"chart\" id=\"" + EscapeXml(chart.id) + "\"><figcaption><h3>" +
           EscapeXml(chart.title) + "</h3><p>" + EscapeXml(chart.description) +
           "</p></figcaption>" + FormatLegend(chart) + "<div class=\"frame\">" +
           FormatYLabels(chart) +
           "<div class=\"area\" style=\"height:" + FixedNumber(chart.height, 0) + "px\">" +
           chart.picture + "</div>" + FormatXLabels(chart) + "</div></figure>\n";
}

std::string SeriesClass(std::size_t number) {
    return std::string("series s").append(std::to_string(number % kMostSeries + 1));
}

}  // namespace stalwick
