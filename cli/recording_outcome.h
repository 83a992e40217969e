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
    std::uint64_t bytes = 0;  // 0 of a pipe
    std::optional<std::chrono::system_clock::time_point> modified;

    friend bool operator==(const RecordingFile&, const RecordingFile&) = default;
};

[[nodiscard]] RecordingFile QueryRecordingFile(const std::wstring& path);

// SHA-256 in hexadecimal digits; empty where there is none.
struct RecordingChecksums {
    std::string recording;
    std::vector<std::string> outputs;    // as the account lists them
    std::vector<std::wstring> failures;  // why some are empty, a line each
};

// What became of one FILE.
struct RecordingOutcome {
    bool converted = false;   // the status is no failure; false also for one that was not begun
    std::wstring status;      // empty for one that was not begun
    bool passedOver = false;  // its outputs were there and whole already
    // What its line says where nothing was made: why it was refused, or where its outputs are.
    std::wstring withoutConversion;
    ConversionAccount account;
    RecordingFile file;
    RecordingChecksums checksums;
};

enum class Verdict {
    kWhole,       // every output is whole, and so is the recording
    kPassedOver,  // the same, from an earlier conversion
    kWithLosses,  // every output is what it should be, but the recording itself lost data
    kFailed,      // an output is missing or incomplete
    kCanceled,    // ended before the recording's end, in order
    kNotBegun     // a recording before it had failed
};

[[nodiscard]] Verdict VerdictOf(const RecordingOutcome& outcome);

[[nodiscard]] inline bool IsWhole(Verdict verdict) {
    return verdict == Verdict::kWhole || verdict == Verdict::kPassedOver;
}

}  // namespace stalwick
