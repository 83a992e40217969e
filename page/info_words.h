// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "survey/recording_survey.h"

namespace stalwick {

// A survey in words, the same in the table and in the document for machines.

[[nodiscard]] std::wstring DamageReason(const DamagedStretch& damage);
[[nodiscard]] std::wstring CutEndReason(const RecordingSurvey& survey);
// What cannot be learned from this recording, or from its ends alone.
[[nodiscard]] std::vector<std::wstring> WhatCannotBeKnown(const RecordingSurvey& survey);

}  // namespace stalwick
