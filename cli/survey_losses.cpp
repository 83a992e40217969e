// SPDX-License-Identifier: BSD-3-Clause
#include "cli/survey_losses.h"

#include <cstdio>

#include "cli/print_line.h"

namespace stalwick {

void ReportLosses(const RecordingSurvey& survey) {
    if (!survey.readError.empty()) {
        PrintLine(stderr, survey.path + L": could not be read to its end: " + survey.readError +
                              L"; look for a whole copy");
    }
    if (survey.damage.empty()) return;
    PrintLine(stderr, survey.path + L": damaged from byte " +
                          std::to_wstring(survey.damage.front().position) + L" on: " +
                          std::to_wstring(survey.damagedBytes) +
                          L" bytes hold no certain packets; look for a whole copy");
}

void ReportUnreadable(const RecordingSurvey& survey) {
    PrintLine(stderr, survey.path + L": not read: " + survey.error +
                          L"; give a recording that can be read");
}

}  // namespace stalwick
