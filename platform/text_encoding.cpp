// SPDX-License-Identifier: BSD-3-Clause
#include "platform/text_encoding.h"

#include <cstddef>
#include <cstdint>

namespace stalwick {

namespace {

constexpr char32_t kByteEscapeFirst = 0xDC80;
constexpr char32_t kByteEscapeLast = 0xDCFF;
constexpr char32_t kHighSurrogateFirst = 0xD800;
constexpr char32_t kLowSurrogateFirst = 0xDC00;
constexpr char32_t kSurrogateEnd = 0xE000;
constexpr char32_t kFirstAstral = 0x10000;
constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

std::uint8_t ByteAt(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

// Length of the sequence that a first byte announces; 0 for a byte that cannot begin one.
std::size_t SequenceLength(std::uint8_t first) {
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first <= 0xDF) return 2;
    if (first >= 0xE0 && first <= 0xEF) return 3;
    if (first >= 0xF0 && first <= 0xF4) return 4;
    return 0;
}

struct CodePoint {
    char32_t value = 0;
    std::size_t length = 0;  // bytes taken; 0: no valid sequence here
};

CodePoint DecodeAt(std::string_view bytes, std::size_t at) {
    const std::uint8_t first = ByteAt(bytes, at);
    const std::size_t length = SequenceLength(first);
    if (length == 0 || bytes.size() - at < length) return {};
    if (length == 1) return {first, 1};
    char32_t value = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const std::uint8_t next = ByteAt(bytes, at + i);
        if ((next & 0xC0U) != 0x80U) return {};
        value = (value << 6U) | (next & 0x3FU);
    }
    constexpr char32_t kShortest[] = {0, 0, 0x80, 0x800, kFirstAstral};
    const bool surrogate = value >= kHighSurrogateFirst && value < kSurrogateEnd;
    if (value < kShortest[length] || value > kLastCodePoint || surrogate) return {};
    return {value, length};
}

void AppendWide(std::wstring& text, char32_t value) {
    if (kWideIsUtf16 && value >= kFirstAstral) {
        const char32_t offset = value - kFirstAstral;
        text += static_cast<wchar_t>(kHighSurrogateFirst + (offset >> 10U));
        text += static_cast<wchar_t>(kLowSurrogateFirst + (offset & 0x3FFU));
        return;
    }
    text += static_cast<wchar_t>(value);
}

void AppendUtf8(std::string& bytes, char32_t value) {
    if (value < 0x80) {
        bytes += static_cast<char>(value);
        return;
    }
    const int followers = value < 0x800 ? 1 : value < kFirstAstral ? 2 : 3;
    constexpr std::uint32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
    bytes += static_cast<char>(kLead[followers] | (value >> (6 * followers)));
    for (int i = followers - 1; i >= 0; --i) {
        bytes += static_cast<char>(0x80U | ((value >> (6 * i)) & 0x3FU));
    }
}

char32_t UnitAt(std::wstring_view text, std::size_t at) {
    const auto unit = static_cast<char32_t>(text[at]);
    return kWideIsUtf16 ? unit & 0xFFFFU : unit;
}

bool IsPairAt(std::wstring_view text, std::size_t at) {
    if (!kWideIsUtf16 || at + 1 >= text.size()) return false;
    const char32_t high = UnitAt(text, at);
    const char32_t low = UnitAt(text, at + 1);
    return high >= kHighSurrogateFirst && high < kLowSurrogateFirst && low >= kLowSurrogateFirst &&
           low < kSurrogateEnd;
}

// Also for a byte that is not UTF-8: it would be printed unchanged.
bool IsControl(char32_t value) {
    constexpr char32_t kLastEscapedControl = 0xDC9F;
    return value < 0x20 || (value >= 0x7F && value < 0xA0) ||
           (value >= kByteEscapeFirst && value <= kLastEscapedControl);
}

}  // namespace

std::wstring FromUtf8(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        const CodePoint point = DecodeAt(bytes, at);
        AppendWide(text, point.length != 0 ? point.value : 0xDC00U + ByteAt(bytes, at));
        at += point.length != 0 ? point.length : 1;
    }
    return text;
}

std::string ToUtf8(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        char32_t value = UnitAt(text, at);
        if (IsPairAt(text, at)) {
            const char32_t low = UnitAt(text, ++at);
            value =
                kFirstAstral + ((value - kHighSurrogateFirst) << 10U) + (low - kLowSurrogateFirst);
        } else if (value >= kByteEscapeFirst && value <= kByteEscapeLast) {
            bytes += static_cast<char>(value & 0xFFU);
            continue;
        }
        AppendUtf8(bytes, value);
    }
    return bytes;
}

bool IsValidUtf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const CodePoint point = DecodeAt(bytes, at);
        if (point.length == 0) return false;
        at += point.length;
    }
    return true;
}

std::wstring DecodeHeaderBytes(std::string_view bytes) {
    if (IsValidUtf8(bytes)) return FromUtf8(bytes);
    std::wstring text;
    text.reserve(bytes.size());
    for (const char byte : bytes) text += static_cast<wchar_t>(static_cast<std::uint8_t>(byte));
    return text;
}

std::wstring OneLine(std::wstring_view text) {
    constexpr wchar_t kHex[] = L"0123456789abcdef";
    std::wstring line;
    line.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const wchar_t c = text[at];
        const char32_t value = UnitAt(text, at);
        if (IsPairAt(text, at)) {
            line += c;
            line += text[++at];
        } else if (c == L'\n') {
            line += L"\\n";
        } else if (c == L'\r') {
            line += L"\\r";
        } else if (c == L'\t') {
            line += L"\\t";
        } else if (IsControl(value)) {
            line += L"\\x";
            line += kHex[(value >> 4U) & 0xFU];
            line += kHex[value & 0xFU];
        } else {
            line += c;
        }
    }
    return line;
}

}  // namespace stalwick
