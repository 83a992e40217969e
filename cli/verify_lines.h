#pragma once

#include <string>
#include <vector>

#include "survey/verify_report.h"

namespace stalwick {

// What was found in a directory of outputs, a line for each finding and gap, and one for each set
// at its end. `recordingPath`: what it was compared with; empty: nothing.
[[nodiscard]] std::vector<std::wstring> ReportAsLines(const VerifyReport& report,
                                                      const std::wstring& recordingPath);

}  // namespace stalwick
