#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace stalwick {

// Whether outputs are whole: plain values, nothing of it printed.

// Something that is not as it should be.
struct OutputFinding {
    std::wstring path;                    // of the file
    std::optional<std::uint64_t> record;  // from 0
    std::optional<std::uint64_t> byte;    // of the file
    std::wstring text;
};

// A step of the times that is too long: the recorder got nothing there. No fault of an output.
struct OutputGap {
    std::wstring path;
    std::uint64_t record = 0;  // from 0: the first one after it
    std::uint64_t byte = 0;    // where that begins
    double seconds = 0.0;
    std::uint64_t missingSamples = 0;  // a channel
};

// The outputs that one conversion made.
struct VerifiedSet {
    std::vector<std::wstring> names;  // of its files, in the order in which they were made
    std::uint64_t bytes = 0;          // of all of them
    std::vector<OutputFinding> findings;
    std::map<std::wstring, std::uint64_t> unlisted;  // further findings of a file, by path
    std::uint64_t findingCount = 0;                  // also of those that are not listed
    // Of the set's first A/D channel file, else of its raw data file; the first ones.
    std::vector<OutputGap> gaps;
    std::uint64_t gapCount = 0;
};

struct VerifyReport {
    std::wstring directory;
    // Why there is nothing else here, of the directory or of the recording; empty when there is.
    std::wstring error;
    std::wstring recordingError;
    std::vector<VerifiedSet> sets;

    [[nodiscard]] bool IsWhole() const {
        if (!error.empty() || !recordingError.empty()) return false;
        for (const VerifiedSet& set : sets) {
            if (set.findingCount != 0) return false;
        }
        return true;
    }
};

}  // namespace stalwick
