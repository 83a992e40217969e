#pragma once

#include <vector>

#include "ord/ord_file_reader.h"
#include "ord/packet_stream.h"
#include "survey/output_set.h"
#include "survey/verify_report.h"

namespace stalwick {

// Reads the packets of a recording that is open, and compares every record of a set's files with
// those that the packets give. All files of the set are open at once.
void CompareRecords(ORDFileReader& recording, const std::vector<OutputInSet>& outputs,
                    std::size_t mostFindingsPerFile, VerifiedSet& set);

// The same with outputs of a conversion that skipped what is damaged; the stream is a strict one.
void CompareRecords(PacketStream& recording, const std::vector<OutputInSet>& outputs,
                    std::size_t mostFindingsPerFile, VerifiedSet& set);

}  // namespace stalwick
