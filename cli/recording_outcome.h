// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/conversion_account.h"

namespace stalwick {

// A recording as it was when the run began.
struct RecordingFile {
    std::uint64_t bytes = 0;  // 0 for a pipe
    std::optional<std::chrono::system_clock::time_point> modified;

    friend bool operator==(const RecordingFile&, const RecordingFile&) = default;
};

[[nodiscard]] RecordingFile QueryRecordingFile(const std::wstring& path);

// SHA-256 in hexadecimal digits; empty if there is none.
struct RecordingChecksums {
    std::string recording;
    std::vector<std::string> outputs;    // in the order of the account
    std::vector<std::wstring> failures;  // why some are empty, a line each
};

// What became of one FILE.
struct RecordingOutcome {
    bool converted = false;   // the status is not a failure; false also if it was not begun
    std::wstring status;      // empty if it was not begun
    bool passedOver = false;  // "skipped" for users: its outputs already existed and were whole
    // Its line if nothing was created: why it was refused, or where its outputs are.
    std::wstring withoutConversion;
    ConversionAccount account;
    RecordingFile file;
    RecordingChecksums checksums;
};

enum class Verdict {
    kWhole,       // every output is whole, and so is the recording
    kPassedOver,  // the same, from an earlier conversion; the report calls it passed_over
    kWithLosses,  // every output is as it should be, but the recording itself lost data
    kFailed,      // an output is missing or incomplete
    kCanceled,    // ended in order before the recording's end
    kNotBegun     // an earlier recording had failed
};

[[nodiscard]] Verdict VerdictOf(const RecordingOutcome& outcome);

[[nodiscard]] inline bool IsWhole(Verdict verdict) {
    return verdict == Verdict::kWhole || verdict == Verdict::kPassedOver;
}

}  // namespace stalwick
