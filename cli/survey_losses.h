#pragma once

#include "survey/recording_survey.h"

namespace stalwick {

// What is wrong with a recording is also printed where it cannot be overlooked: on standard error.

// Of one that has lost data, a line for each reason.
void ReportLosses(const RecordingSurvey& survey);
// Of one that could not be looked at.
void ReportUnreadable(const RecordingSurvey& survey);

}  // namespace stalwick
