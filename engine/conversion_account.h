// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/conversion_detail.h"
#include "survey/recording_survey.h"

namespace stalwick {

// An output as it is on the disk.
struct OutputAccount {
    std::wstring path;
    std::uint64_t bytes = 0;    // 0 if it no longer exists
    std::uint64_t records = 0;  // whole ones

    friend bool operator==(const OutputAccount&, const OutputAccount&) = default;
};

// What became of one recording. A failed or canceled conversion reports how far it came.
struct ConversionAccount {
    std::wstring recording;        // its path, as it was given
    std::wstring outputDirectory;  // of this recording's outputs, even if it could not be created

    bool failed = false;    // the status is a failure; the outputs may lack their end
    bool canceled = false;  // ended before the recording's end; its outputs were closed in order

    std::uint32_t adChannels = 0;  // from the recording's header; 0 also if it was not read
    std::uint64_t packets = 0;     // converted
    // For the packets converted: from the first hardware timestamp to the end of the last packet's
    // ten samples; without timestamps ten samples per packet.
    double durationSeconds = 0.0;

    std::uint64_t inputBytes = 0;      // of the recording; 0 if it was not opened or is a pipe
    std::uint64_t inputBytesRead = 0;  // of those, the bytes converted, including the header

    std::uint64_t outputFiles = 0;       // created, or found whole if it was skipped
    std::uint64_t outputBytes = 0;       // written to them, headers included
    std::vector<OutputAccount> outputs;  // these files; created ones in order of creation

    // For the packets converted; none without timestamps, or if DataProcessor was not asked to
    // follow the time.
    std::optional<TimeAccount> time;
    // What a conversion that continues after damage left out, if DataProcessor was asked to follow
    // the time.
    std::vector<DamagedStretch> skipped;

    std::vector<ConversionDetail> details;
};

}  // namespace stalwick
