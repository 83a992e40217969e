#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/conversion_detail.h"
#include "survey/recording_survey.h"

namespace stalwick {

// An output as it lies on the disk.
struct OutputAccount {
    std::wstring path;
    std::uint64_t bytes = 0;    // 0 where it is no longer there
    std::uint64_t records = 0;  // whole ones

    friend bool operator==(const OutputAccount&, const OutputAccount&) = default;
};

// What became of one recording. A conversion that failed or was canceled says how far it came.
struct ConversionAccount {
    std::wstring recording;        // its path, as it was given
    std::wstring outputDirectory;  // of this recording's outputs, also where it could not be made

    bool failed = false;    // the status is a failure; the outputs may lack their end
    bool canceled = false;  // ended before the recording's end; its outputs were closed in order

    std::uint32_t adChannels = 0;  // of the recording's header; 0 also where it was not read
    std::uint64_t packets = 0;     // converted
    // Of the packets converted: from the first hardware timestamp to the end of the last packet's
    // ten samples; without timestamps ten samples a packet.
    double durationSeconds = 0.0;

    std::uint64_t inputBytes = 0;      // of the recording; 0 where it was not opened or is a pipe
    std::uint64_t inputBytesRead = 0;  // of those, header included, that were converted

    std::uint64_t outputFiles = 0;       // created
    std::uint64_t outputBytes = 0;       // written to them, headers included
    std::vector<OutputAccount> outputs;  // these files, in the order of their creation

    // Of the packets converted; none without timestamps, or if DataProcessor was not to follow the
    // time.
    std::optional<TimeAccount> time;
    // What a conversion that goes on after damage left out, if DataProcessor was to follow the
    // time.
    std::vector<DamagedStretch> skipped;

    std::vector<ConversionDetail> details;
};

}  // namespace stalwick
