// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"

namespace stalwick {

// What the report of an earlier run contains about recordings that were whole then.
class EarlierReport {
  public:
    // Reads the report (docs/report.schema.json). A missing report, or one that somebody has
    // changed into something else, contains nothing.
    explicit EarlierReport(const std::wstring& path);

    // The outputs that were made from the recording, if its size and modification time have not
    // changed, its outputs go to the same directory, and no output is requested now that was not
    // requested then; otherwise none.
    [[nodiscard]] std::vector<OutputAccount> OutputsOf(const PlannedRecording& recording,
                                                       const RecordingFile& file,
                                                       const CommandLine& commandLine) const;

  private:
    struct Conversion {
        std::uint64_t bytes = 0;  // of the recording
        std::string modified;     // as from FormatReportTime
        std::string directory;
        std::vector<OutputAccount> outputs;  // their paths without the directory
    };

    void Read(const std::string& text);

    ChannelOptions channelOptions_{};
    bool writeRawData_ = false;
    std::map<std::string, Conversion> conversions_;  // by the recording's path, UTF-8
};

}  // namespace stalwick
