// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "cli/command_line.h"
#include "engine/conversion_account.h"

namespace stalwick {

// One FILE of a command line and the directory of its outputs.
struct PlannedRecording {
    std::wstring name;             // as the user gave it, for messages
    std::wstring path;             // the same, absolute
    std::wstring parentDirectory;  // absolute; the outputs go into its subdirectory
    std::wstring shownOutputs;     // that subdirectory as the user would write it
    // The outputs it had according to the report of an earlier run, if it has not changed.
    std::vector<OutputAccount> knownOutputs = {};
};

// The FILEs in order. Without --output-dir, the outputs of each go next to it.
[[nodiscard]] std::vector<PlannedRecording> PlanRecordings(const CommandLine& commandLine);

// Two recordings whose outputs would go into the same directory, in one sentence; empty if there
// are none. Names that differ only in case count as the same, as on some file systems.
[[nodiscard]] std::wstring DescribeSharedDirectory(const std::vector<PlannedRecording>& recordings);

}  // namespace stalwick
