#pragma once

#include <string>
#include <vector>

#include "cli/command_line.h"
#include "engine/conversion_account.h"

namespace stalwick {

// One FILE of a command line and where its outputs go.
struct PlannedRecording {
    std::wstring name;             // as the user gave it: messages use it
    std::wstring path;             // the same, absolute
    std::wstring outputDirectory;  // absolute; the outputs go into its subdirectory
    std::wstring shownOutputs;     // that subdirectory as the user would write it
    // What the report of an earlier run says was made of it, if it is as it was.
    std::vector<OutputAccount> knownOutputs = {};
};

// The FILEs in their order. Without --output-dir each one's outputs go beside it.
[[nodiscard]] std::vector<PlannedRecording> PlanRecordings(const CommandLine& commandLine);

// Two recordings whose outputs would go into one directory, in one sentence; empty if there are
// none. Names that differ in the case of their letters count as one: some file systems take them
// for one.
[[nodiscard]] std::wstring DescribeSharedDirectory(const std::vector<PlannedRecording>& recordings);

}  // namespace stalwick
