// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace stalwick {

// Whether outputs are whole, as plain values; nothing is printed.

// Something that is not as it should be.
struct OutputFinding {
    std::wstring path;                    // of the file
    std::optional<std::uint64_t> record;  // from 0
    std::optional<std::uint64_t> byte;    // of the file
    std::wstring text;
};

// A step of the times that is too long: the recorder received nothing there. Not a fault of an
// output.
struct OutputGap {
    std::wstring path;
    std::uint64_t record = 0;  // from 0: the first one after it
    std::uint64_t byte = 0;    // its position
    double seconds = 0.0;
    std::uint64_t missingSamples = 0;  // per channel
};

// The outputs of one conversion.
struct VerifiedSet {
    std::vector<std::wstring> names;  // of its files, in order of creation
    std::uint64_t bytes = 0;          // of all of them
    std::vector<OutputFinding> findings;
    std::map<std::wstring, std::uint64_t> unlisted;  // further findings of a file, by path
    std::uint64_t findingCount = 0;                  // including those not listed
    // For the set's first A/D channel file, otherwise for its raw data file; the first ones.
    std::vector<OutputGap> gaps;
    std::uint64_t gapCount = 0;
};

struct VerifyReport {
    std::wstring directory;
    // Why everything else is empty, about the directory or the recording; empty if nothing went
    // wrong.
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
