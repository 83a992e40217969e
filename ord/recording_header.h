// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ord/decode_options.h"

namespace stalwick {

// A required number whose text does not read as a number.
struct UnreadableNumber {
    std::wstring key;
    std::wstring takenAs;  // the value that the conversion uses
};

// The fields of a recording's header, as docs/ord-format.md describes them. A missing field keeps
// the default below.
struct RecordingHeader {
    std::uint32_t numADChannels = 0;
    std::uint32_t samplingFrequency = 0;  // samples per second
    std::uint32_t adMaxValue = 0;
    double adBitVolts = 0.0;  // volts per step of a sample
    std::uint32_t inputRange = 0;
    std::wstring fileVersion = L"1.0";
    std::int64_t utcOffsetMicroseconds = 0;
    std::wstring sessionUuid;
    std::wstring acquisitionSystem;
    bool baseImuAvailable = false;
    bool afeImuAvailable = false;
    bool ultrasonicAvailable = false;
    std::vector<UnreadableNumber> unreadableNumbers;
};

// Reads the fields of `headerText` into `header`, which must have the defaults. Returns 0, or -1 at
// the first missing required field: the fields after it keep their values. `errorMessage` names the
// last missing field, even an optional one.
[[nodiscard]] std::int32_t ReadRecordingHeader(const std::wstring& headerText,
                                               RecordingHeader& header, std::wstring& errorMessage);

// How packets of a recording with this header are decoded.
[[nodiscard]] DecodeOptions PacketDecodeOptions(const RecordingHeader& header);

}  // namespace stalwick
