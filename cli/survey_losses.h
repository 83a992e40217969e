// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "survey/recording_survey.h"

namespace stalwick {

// Prints what is wrong with a recording on standard error too, where nobody overlooks it.

// A line for each reason why a recording has lost data.
void ReportLosses(const RecordingSurvey& survey);
// For a recording that could not be read.
void ReportUnreadable(const RecordingSurvey& survey);

}  // namespace stalwick
