#pragma once

#include <string>
#include <vector>

#include "survey/recording_survey.h"

namespace stalwick {

// The survey for a person to read, in lines.
[[nodiscard]] std::vector<std::wstring> SurveyAsTable(const RecordingSurvey& survey);

}  // namespace stalwick
