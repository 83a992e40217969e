#pragma once

#include <string>

#include "survey/page_survey.h"

namespace stalwick {

// What the page shows as one JSON document; docs/page.schema.json says what it holds.
[[nodiscard]] std::string PageAsJson(const PageSurvey& page);

}  // namespace stalwick
