// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "survey/page_survey.h"

namespace stalwick {

// The text, lists and tables of a recording's page, as HTML.

// From the beginning of the document to that of <main>, and from its end on.
[[nodiscard]] std::string PageHead(const std::string& title);
[[nodiscard]] std::string PageFoot();

[[nodiscard]] std::string FindingsSection(const PageSurvey& page);
[[nodiscard]] std::string FactsSection(const PageSurvey& page);
[[nodiscard]] std::string LossTables(const PageSurvey& page);  // gaps and damage, the first ones
[[nodiscard]] std::string ChannelMap(const PageSurvey& page);
[[nodiscard]] std::string RulesTable(const PageSurvey& page);
[[nodiscard]] std::string ChannelTable(const PageSurvey& page);

}  // namespace stalwick
