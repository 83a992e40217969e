#pragma once

#include <string>

#include "survey/recording_survey.h"

namespace stalwick {

enum class SurveyDepth {
    kWhole,
    kQuick  // the header and the packets at both ends; a pipe is read whole all the same
};

// Looks at a recording from its first byte to its last, also beyond damage. What cannot be opened,
// or has no complete header, gives a survey with an error.
[[nodiscard]] RecordingSurvey SurveyRecording(const std::wstring& path,
                                              SurveyDepth depth = SurveyDepth::kWhole);

}  // namespace stalwick
