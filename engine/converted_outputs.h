// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/conversion_account.h"
#include "engine/wanted_outputs.h"

namespace stalwick {

// Whether a recording's outputs exist and are whole.
struct ConvertedOutputs {
    bool whole = false;
    std::wstring reason;      // why not, one line: the first output that is not as it should be
    std::uint64_t files = 0;  // of a whole set
    std::uint64_t bytes = 0;  // of all of them
    std::vector<OutputAccount> outputs;
    bool areAsKnown = false;  // the recording was not read: see ConvertedOutputsRequest::known
};

struct ConvertedOutputsRequest {
    std::wstring recordingPath;
    std::wstring directory;  // the directory of its outputs
    WantedOutputs wanted;
    // What a whole conversion of this very recording is known to have made, with at least the
    // wanted outputs. If they have not changed, the recording is not read.
    std::vector<OutputAccount> known = {};
};

// Looks for a whole set of the wanted outputs, made from this recording. Every output must have a
// whole header with the recording's -SessionUUID and a closing time (the event file never has one).
// It must also have exactly as many records, and samples in the last one, as the packets of the
// recording produce, which are all read and decoded for that; or as many as are known. An output
// under a later name (CSC1_01.vcs) counts as well. Sample values and timestamps are not compared.
//
// A recording that itself lost data never counts, so that its losses are reported each time; nor
// does one without -SessionUUID, or one that is not a regular file.
[[nodiscard]] ConvertedOutputs FindConvertedOutputs(
    const ConvertedOutputsRequest& request, const std::atomic<std::uint8_t>& cancelRequested);

}  // namespace stalwick
