// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "ord/recording_header.h"

namespace stalwick {

// Why a recording cannot be converted; both are empty if that is unknown.
struct RecordingRefusal {
    bool refused = false;
    std::wstring errorText;  // for the conversion's status; may be empty even if refused
    std::wstring reason;     // one line, after the recording's name: why, and what to do

    explicit operator bool() const { return refused; }
};

// Header values that no sane recorder writes: more than 256 channels, no sampling frequency.
[[nodiscard]] RecordingRefusal CheckHeader(const RecordingHeader& header);

// Checks a recording before anything is created for it: whether it exists, can be read, has every
// required header field, and can have its own directory in `outputDirectory`. Anything except a
// regular file, for example a pipe, is not read: bytes read from it would be gone.
[[nodiscard]] RecordingRefusal CheckRecording(const std::wstring& path,
                                              const std::wstring& outputDirectory);

}  // namespace stalwick
