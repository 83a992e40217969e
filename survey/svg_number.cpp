// SPDX-License-Identifier: BSD-3-Clause
#include "survey/svg_number.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

// U+FFFE and U+FFFF, which are UTF-8 but not XML characters.
bool IsNoncharacter(const std::string& text, std::size_t at) {
    return text.compare(at, 3, "\xEF\xBF\xBE") == 0 || text.compare(at, 3, "\xEF\xBF\xBF") == 0;
}

void AppendEscaped(std::string& escaped, char c) {
    switch (c) {
        case '&':
            escaped += "&amp;";
            return;
        case '<':
            escaped += "&lt;";
            return;
        case '>':
            escaped += "&gt;";
            return;
        case '"':
            escaped += "&quot;";
            return;
        default:
            break;
    }
    const bool isControl = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    if (isControl && c != '\t' && c != '\n') {
        escaped += kReplacement;
    } else {
        escaped += c;
    }
}

}  // namespace

std::string SvgNumber(double value) {
    constexpr double kMost = 1e9;
    if (std::isnan(value)) return "0";
    const std::int64_t hundredths = std::llround(std::clamp(value, -kMost, kMost) * 100.0);
    const std::int64_t whole = std::abs(hundredths) / 100;
    const auto rest = static_cast<int>(std::abs(hundredths) % 100);
    std::string text = hundredths < 0 ? "-" : "";
    if (whole != 0 || rest == 0) text += std::to_string(whole);
    if (rest == 0) return text;
    text += '.';
    text += static_cast<char>('0' + rest / 10);
    if (rest % 10 != 0) text += static_cast<char>('0' + rest % 10);
    return text;
}

std::string EscapeXml(const std::string& text) {
    const bool isUtf8 = IsValidUtf8(text);
    std::string escaped;
    escaped.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isUtf8 && static_cast<unsigned char>(text[i]) >= 0x80) {
            escaped += kReplacement;
            continue;
        }
        if (text[i] == '\xEF' && IsNoncharacter(text, i)) {
            escaped += kReplacement;
            i += 2;
            continue;
        }
        AppendEscaped(escaped, text[i]);
    }
    return escaped;
}

}  // namespace stalwick
