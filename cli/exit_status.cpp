// SPDX-License-Identifier: BSD-3-Clause
#include "cli/exit_status.h"

namespace stalwick {

namespace {

int CancelExitStatus(Interruption interruption) {
    switch (interruption) {
        case Interruption::kTerminate:
            return kExitTerminated;
        case Interruption::kHangUp:
            return kExitHungUp;
        default:
            return kExitInterrupted;
    }
}

}  // namespace

int ExitStatus(const std::vector<RecordingOutcome>& outcomes, bool canceled,
               Interruption interruption) {
    // Even if a recording had failed before: whoever canceled knows that not everything is done.
    if (canceled || interruption == Interruption::kInterrupt) {
        return CancelExitStatus(interruption);
    }
    int status = kExitWhole;
    for (const RecordingOutcome& outcome : outcomes) {
        const Verdict verdict = VerdictOf(outcome);
        if (IsWhole(verdict)) continue;
        if (verdict != Verdict::kWithLosses) return kExitFailed;
        status = kExitLosses;
    }
    return status;
}

}  // namespace stalwick
