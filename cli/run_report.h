// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"

namespace stalwick {

// A finished run.
struct RunReport {
    const CommandLine& commandLine;
    std::chrono::system_clock::time_point started{};
    std::chrono::system_clock::time_point ended{};
    const std::vector<PlannedRecording>* recordings = nullptr;
    const std::vector<RecordingOutcome>* outcomes = nullptr;  // of these
    std::wstring status{};                                    // as printed
    int exitStatus = 0;
};

// UTC to the microsecond, in ISO 8601.
[[nodiscard]] std::string FormatReportTime(std::chrono::system_clock::time_point time);

// The document that docs/report.schema.json describes, with a line feed at its end.
[[nodiscard]] std::string FormatRunReport(const RunReport& report);

}  // namespace stalwick
