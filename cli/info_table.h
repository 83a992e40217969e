// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "survey/recording_survey.h"

namespace stalwick {

// The survey as lines for people to read.
[[nodiscard]] std::vector<std::wstring> SurveyAsTable(const RecordingSurvey& survey);

}  // namespace stalwick
