// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "survey/page_survey.h"

namespace stalwick {

// The contents of the page as one JSON document; docs/page.schema.json describes it.
[[nodiscard]] std::string PageAsJson(const PageSurvey& page);

}  // namespace stalwick
