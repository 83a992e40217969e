// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <vector>

#include "ord/recording_header.h"
#include "survey/output_set.h"
#include "survey/verify_outputs.h"

namespace stalwick {

// Reports files that cannot be read, and files that are missing from a set or superfluous.
// `recording` determines which there have to be; if it is null, the other files do.
void CheckMembers(const std::vector<OutputInSet>& outputs, const RecordingHeader* recording,
                  std::size_t mostFindingsPerFile, VerifiedSet& set);

// Checks every record of a set's files, and whether their counts and times agree.
void CheckRecords(const std::vector<OutputInSet>& outputs, const VerifyRequest& request,
                  VerifiedSet& set);

}  // namespace stalwick
