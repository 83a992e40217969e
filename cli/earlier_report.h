#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"

namespace stalwick {

// What the report of an earlier run says of recordings that were whole then.
class EarlierReport {
  public:
    // Reads the report (docs/report.schema.json). One that is missing, or that somebody has
    // changed into something else, says nothing.
    explicit EarlierReport(const std::wstring& path);

    // The outputs that were made of the recording, if its size and its time of change are what they
    // were, its outputs go to the same directory, and no output is asked for now that was not then;
    // else none.
    [[nodiscard]] std::vector<OutputAccount> OutputsOf(const PlannedRecording& recording,
                                                       const RecordingFile& file,
                                                       const CommandLine& commandLine) const;

  private:
    struct Conversion {
        std::uint64_t bytes = 0;  // of the recording
        std::string modified;     // as FormatReportTime has it
        std::string directory;
        std::vector<OutputAccount> outputs;  // their paths without the directory
    };

    void Read(const std::string& text);

    ChannelOptions channelOptions_{};
    bool writeRawData_ = false;
    std::map<std::string, Conversion> conversions_;  // by the recording's path, UTF-8
};

}  // namespace stalwick
