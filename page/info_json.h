#pragma once

#include <string>

#include "survey/recording_survey.h"

namespace stalwick {

// The survey as one JSON document on one line, without the line's end; docs/info.schema.json says
// what it holds.
[[nodiscard]] std::string SurveyAsJson(const RecordingSurvey& survey);

}  // namespace stalwick
