#pragma once

#include "platform/console.h"

namespace stalwick {

inline constexpr int kExitComplete = 0;       // every output is what it should be
inline constexpr int kExitFailed = 1;         // a conversion failed or an output is incomplete
inline constexpr int kExitUsage = 2;          // wrong arguments, or no output directory
inline constexpr int kExitHungUp = 129;       // canceled by SIGHUP
inline constexpr int kExitInterrupted = 130;  // canceled by SIGINT or Ctrl-C
inline constexpr int kExitTerminated = 143;   // canceled by SIGTERM

// The exit status of a run that the interruption canceled.
constexpr int CancelExitStatus(Interruption interruption) {
    switch (interruption) {
        case Interruption::kTerminate:
            return kExitTerminated;
        case Interruption::kHangUp:
            return kExitHungUp;
        default:
            return kExitInterrupted;
    }
}

}  // namespace stalwick
