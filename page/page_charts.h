// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "survey/page_survey.h"

namespace stalwick {

// The charts of a recording's page, each a <figure>, or nothing if there is nothing to show.

[[nodiscard]] std::string TimeLineChart(const PageSurvey& page);  // gaps, damage, TTL lines
[[nodiscard]] std::string EventsChart(const PageSurvey& page);    // per minute
[[nodiscard]] std::string SpectraChart(const PageSurvey& page);
[[nodiscard]] std::string TraceCharts(const PageSurvey& page);
[[nodiscard]] std::string SensorCharts(const PageSurvey& page);  // inertial units, ultrasonic

// A few small traces for a list of recordings.
[[nodiscard]] std::string Thumbnail(const PageSurvey& page, const std::string& id);

}  // namespace stalwick
