// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <vector>

#include "ord/recording_header.h"
#include "survey/output_set.h"
#include "survey/verify_report.h"

namespace stalwick {

// Compares every line of the headers of a set's files with its prescribed form. Lines that depend
// on the recording are compared with `recording` or, if that is null, with those of the other
// files. For -FileUUID, -TimeCreated and -TimeClosed only the form is checked; for the version on
// -ApplicationName only that all files agree.
void CheckHeaders(const std::vector<OutputInSet>& outputs, const RecordingHeader* recording,
                  std::size_t mostFindingsPerFile, VerifiedSet& set);

}  // namespace stalwick
