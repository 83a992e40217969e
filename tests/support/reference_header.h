// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// How a recording's text header is read (docs/ord-format.md), with the standard library's regular
// expressions. They recurse for every character: give them short headers only.

namespace stalwick::test {

/** Tokens of every line with the key, in the order of the text. */
std::vector<std::vector<std::wstring>> ReferenceHeaderFieldValues(const std::wstring& headerText,
                                                                  const std::wstring& key);

/** -1: not a version, or beyond 2,147,483,647. */
std::int32_t ReferenceVersionNumber(const std::wstring& text);

struct ReferenceHeaderFields {
    std::uint32_t numADChannels = 0;
    std::uint32_t samplingFrequency = 0;
    std::uint32_t adMaxValue = 0;
    double adBitVolts = 0.0;
    std::uint32_t inputRange = 0;
    std::wstring fileVersion = L"1.0";
    std::int32_t versionNumber = 10;  // of fileVersion
    std::int64_t utcOffsetMicroseconds = 0;
    std::wstring sessionUuid;
    std::wstring acquisitionSystem;
    bool ultrasonicAvailable = false;
    bool baseImuAvailable = false;
    bool afeImuAvailable = false;
    std::wstring errorText;  // empty: no required field is missing

    bool operator==(const ReferenceHeaderFields&) const = default;
};

ReferenceHeaderFields ReferenceReadHeaderFields(const std::wstring& headerText);

/** The text up to the first zero byte: UTF-8 if all of it is valid UTF-8, otherwise Latin-1. */
std::wstring ReferenceHeaderText(std::string_view headerBlock);

std::string ReferenceUtf8(const std::wstring& text);

}  // namespace stalwick::test
