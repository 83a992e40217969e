// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "survey/recording_survey.h"

namespace stalwick {

// The survey as one JSON document on one line, without the end of the line; docs/info.schema.json
// describes its contents.
[[nodiscard]] std::string SurveyAsJson(const RecordingSurvey& survey);

}  // namespace stalwick
