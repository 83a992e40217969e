// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/header_text.h"

#include <array>

namespace stalwick {

namespace {

constexpr std::array<const wchar_t*, 17> kDataTypeNames = {L"Invalid",
                                                           L"SingleElectrode",
                                                           L"Stereotrode",
                                                           L"Timestamp",
                                                           L"Tetrode",
                                                           L"CSC",
                                                           L"Event",
                                                           L"Video",
                                                           L"Raw",
                                                           L"MClustTS",
                                                           L"VCC",
                                                           L"SessionIndex",
                                                           L"Subject",
                                                           L"DataProcessingErrors",
                                                           L"PersystLayout",
                                                           L"PersystData",
                                                           L"StimulationData"};

}  // namespace

std::wstring HeaderLine(const std::wstring& key, const std::wstring& value) {
    return key + L' ' + value + L"\r\n";
}

std::wstring DataTypeName(std::uint8_t fileType) {
    return kDataTypeNames[fileType < kDataTypeNames.size() ? fileType : 0];
}

std::wstring FormatUuid(const Uuid& bytes) {
    constexpr wchar_t kDigits[] = L"0123456789abcdef";
    std::wstring text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text += kDigits[bytes[i] >> 4U];
        text += kDigits[bytes[i] & 0x0FU];
        if (i == 3 || i == 5 || i == 7 || i == 9) text += L'-';
    }
    return text;
}

std::wstring QuoteFileName(const std::wstring& text) {
    constexpr wchar_t kQuote = L'"';
    std::wstring quoted = text;
    if (text.empty() || text.front() != kQuote) quoted.insert(quoted.begin(), kQuote);
    if (text.empty() || text.back() != kQuote) quoted += kQuote;
    return quoted;
}

std::wstring FormatDouble(double value, std::chars_format notation, int precision) {
    std::array<char, 512> digits;
    const auto result =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, notation, precision);
    return {digits.data(), result.ptr};
}

}  // namespace stalwick
