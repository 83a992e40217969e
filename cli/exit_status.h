// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <vector>

#include "cli/recording_outcome.h"
#include "platform/console.h"

namespace stalwick {

inline constexpr int kExitWhole = 0;          // every recording and every output is whole
inline constexpr int kExitFailed = 1;         // a conversion failed or an output is incomplete
inline constexpr int kExitUsage = 2;          // wrong arguments, or no output directory
inline constexpr int kExitLosses = 3;         // all outputs exist; a recording lost data
inline constexpr int kExitHungUp = 129;       // canceled by SIGHUP
inline constexpr int kExitInterrupted = 130;  // canceled by SIGINT or Ctrl-C
inline constexpr int kExitTerminated = 143;   // canceled by SIGTERM

// The worst of all recordings, or that of the interruption if it canceled the run. An interrupt
// that came too late to cancel anything counts too: the loop that called the command must stop.
[[nodiscard]] int ExitStatus(const std::vector<RecordingOutcome>& outcomes, bool canceled,
                             Interruption interruption);

}  // namespace stalwick
