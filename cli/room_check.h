// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/conversion_plan.h"
#include "platform/file_system.h"

namespace stalwick {

using SpaceQuery = std::function<std::optional<FreeSpace>(const std::wstring& directory)>;

// A line for each file system that has less room than the outputs of the recordings will need
// there, estimated from their first packets: how much is needed, how much is free. With
// --skip-converted, recordings whose outputs already have a directory are not counted.
[[nodiscard]] std::vector<std::wstring> DescribeLackOfRoom(
    const std::vector<PlannedRecording>& recordings, const CommandLine& commandLine,
    const SpaceQuery& querySpace = QueryFreeSpace);

}  // namespace stalwick
