#pragma once

#include <cstddef>
#include <vector>

#include "ord/recording_header.h"
#include "survey/output_set.h"
#include "survey/verify_report.h"

namespace stalwick {

// Holds every line of the headers of a set's files against its prescribed form, and those that
// depend on the recording against `recording`, or, where that is null, against those of the others.
// Of -FileUUID, -TimeCreated and -TimeClosed only the form is looked at, of the version on
// -ApplicationName only that all files have the same.
void CheckHeaders(const std::vector<OutputInSet>& outputs, const RecordingHeader* recording,
                  std::size_t mostFindingsPerFile, VerifiedSet& set);

}  // namespace stalwick
