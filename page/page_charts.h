#pragma once

#include <string>

#include "survey/page_survey.h"

namespace stalwick {

// The charts of a recording's page, each a <figure>, or nothing where there is nothing to show.

[[nodiscard]] std::string TimeLineChart(const PageSurvey& page);  // gaps, damage, TTL lines
[[nodiscard]] std::string EventsChart(const PageSurvey& page);    // a minute
[[nodiscard]] std::string SpectraChart(const PageSurvey& page);
[[nodiscard]] std::string TraceCharts(const PageSurvey& page);
[[nodiscard]] std::string SensorCharts(const PageSurvey& page);  // inertial units, ultrasonic

// A few traces, small, for a list of recordings.
[[nodiscard]] std::string Thumbnail(const PageSurvey& page, const std::string& id);

}  // namespace stalwick
