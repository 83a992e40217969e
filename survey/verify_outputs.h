// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "survey/verify_report.h"

namespace stalwick {

struct VerifyRequest {
    std::wstring directory;  // that holds the outputs of a recording
    // The recording from which they were made: every sample, event, raw word and time is compared
    // with it. Empty: the outputs are only compared with one another and with their format.
    std::wstring recordingPath;
    std::size_t mostFindingsPerFile = 10;  // to list; all are counted
    // Made by a conversion that skipped damage: records may end before such a place.
    bool salvaged = false;
};

// Checks whether the outputs in a directory are whole. Several conversions may have written there:
// each file belongs to the conversion whose event file is nearest in time, and the numbers in their
// names (CSC1_01.vcs) keep the order. Other files are ignored. Memory does not grow with the
// outputs.
[[nodiscard]] VerifyReport VerifyOutputs(const VerifyRequest& request);

// The same for some files of the directory.
[[nodiscard]] VerifyReport VerifyOutputs(const VerifyRequest& request,
                                         const std::vector<std::wstring>& names);

}  // namespace stalwick
