#pragma once

#include <string>
#include <vector>

#include "survey/recording_survey.h"

namespace stalwick {

// What a survey says in words, the same in the table and in the document for machines.

[[nodiscard]] std::wstring DamageReason(const DamagedStretch& damage);
[[nodiscard]] std::wstring CutEndReason(const RecordingSurvey& survey);
// What this recording, or a look at its ends alone, cannot tell.
[[nodiscard]] std::vector<std::wstring> WhatCannotBeKnown(const RecordingSurvey& survey);

}  // namespace stalwick
