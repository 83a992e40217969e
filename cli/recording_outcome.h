#pragma once

#include <string>

#include "engine/conversion_account.h"

namespace stalwick {

// What became of one FILE.
struct RecordingOutcome {
    bool converted = false;   // the status is no failure; false also for one that was not begun
    std::wstring status;      // empty for one that was not begun
    bool passedOver = false;  // its outputs were there and whole already
    // What its line says where nothing was made: why it was refused, or where its outputs are.
    std::wstring withoutConversion;
    ConversionAccount account;
};

enum class Verdict {
    kWhole,       // every output is whole, and so is the recording
    kPassedOver,  // the same, from an earlier conversion
    kWithLosses,  // every output is what it should be, but the recording itself lost data
    kFailed,      // an output is missing or incomplete
    kCanceled,    // ended before the recording's end, in order
    kNotBegun     // a recording before it had failed
};

Verdict VerdictOf(const RecordingOutcome& outcome);

inline bool IsWhole(Verdict verdict) {
    return verdict == Verdict::kWhole || verdict == Verdict::kPassedOver;
}

}  // namespace stalwick
