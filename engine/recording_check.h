#pragma once

#include <string>

#include "ord/recording_header.h"

namespace stalwick {

// Why a recording cannot be converted; both are empty where that is not known.
struct RecordingRefusal {
    bool refused = false;
    std::wstring errorText;  // what the conversion's status gives; may be empty also if refused
    std::wstring reason;     // one line, after the recording's name: why, and what to do

    explicit operator bool() const { return refused; }
};

// Header values that nothing sane produces: more than 256 channels, no sampling frequency.
[[nodiscard]] RecordingRefusal CheckHeader(const RecordingHeader& header);

// Looks at a recording before anything is made for it: whether it is there, can be read, has every
// required header field, and can have a directory of its own in `outputDirectory`. What is no
// ordinary file, a pipe for example, is not looked at: what is read of it is gone.
[[nodiscard]] RecordingRefusal CheckRecording(const std::wstring& path,
                                              const std::wstring& outputDirectory);

}  // namespace stalwick
