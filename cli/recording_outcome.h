#pragma once

#include <string>

#include "engine/conversion_account.h"

namespace stalwick {

// What became of one FILE.
struct RecordingOutcome {
    bool converted = false;  // the status is no failure; false also for one that was not begun
    std::wstring status;     // empty for one that was not begun
    ConversionAccount account;
};

enum class Verdict {
    kWhole,       // every output is whole, and so is the recording
    kWithLosses,  // every output is what it should be, but the recording itself lost data
    kFailed,      // an output is missing or incomplete
    kCanceled,    // ended before the recording's end, in order
    kNotBegun     // a recording before it had failed
};

Verdict VerdictOf(const RecordingOutcome& outcome);

}  // namespace stalwick
