// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "survey/verify_report.h"

namespace stalwick {

// The findings in a directory of outputs, a line for each finding and gap, then one for each set.
// `recordingPath`: the recording it was compared with; empty: none.
[[nodiscard]] std::vector<std::wstring> ReportAsLines(const VerifyReport& report,
                                                      const std::wstring& recordingPath);

}  // namespace stalwick
