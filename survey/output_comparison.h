// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <vector>

#include "ord/ord_file_reader.h"
#include "ord/packet_stream.h"
#include "survey/output_set.h"
#include "survey/verify_report.h"

namespace stalwick {

// Reads the packets of an open recording, and compares every record of a set's files with the
// expected ones. All files of the set are open at the same time.
void CompareRecords(ORDFileReader& recording, const std::vector<OutputInSet>& outputs,
                    std::size_t mostFindingsPerFile, VerifiedSet& set);

// The same for outputs of a conversion that skipped damage; the stream is a strict one.
void CompareRecords(PacketStream& recording, const std::vector<OutputInSet>& outputs,
                    std::size_t mostFindingsPerFile, VerifiedSet& set);

}  // namespace stalwick
