// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "survey/activity_collector.h"
#include "survey/recording_survey.h"
#include "survey/signal_rules.h"
#include "survey/spectrum_collector.h"
#include "survey/trace_collector.h"

namespace stalwick {

// What a page shows about a recording: plain values.
struct PageSurvey {
    RecordingSurvey survey;
    bool canceled = false;  // if set, nothing else is valid
    SignalRules rules;
    SignalVerdict verdict;
    SignalSpectra spectra;
    std::vector<TracePlace> traces;
    TimeBins<ActivityBin> activity{1.0};
    TimeBins<EventBin> events{1.0};
};

// Surveys a recording in one pass, in memory that does not grow with its length. Ends when any
// thread sets `cancel`.
[[nodiscard]] PageSurvey SurveyForPage(const std::wstring& path,
                                       const std::atomic<std::uint8_t>* cancel = nullptr);

}  // namespace stalwick
