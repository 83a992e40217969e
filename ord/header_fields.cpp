// SPDX-License-Identifier: BSD-3-Clause
#include "ord/header_fields.h"

#include <algorithm>
#include <locale>
#include <sstream>

namespace stalwick {

namespace {

using Position = std::wstring::size_type;

bool IsSpace(wchar_t c) {
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}

bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

bool IsLineBreak(wchar_t c) {
    return c == L'\n' || c == L'\r' || c == wchar_t{0x2028} || c == wchar_t{0x2029};
}

wchar_t LowerCase(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

bool StandsAt(const std::wstring& text, Position at, const std::wstring& key) {
    if (text.size() - at < key.size()) return false;
    return std::equal(key.begin(), key.end(), text.begin() + static_cast<std::ptrdiff_t>(at),
                      [](wchar_t a, wchar_t b) { return LowerCase(a) == LowerCase(b); });
}

// End of the quoted text that begins with the quote at `open`, or npos: it needs at least one
// character and a closing quote.
Position FindClosingQuote(const std::wstring& value, Position open) {
    const Position close = value.find(L'"', open + 1);
    return close == open + 1 ? std::wstring::npos : close;
}

template <typename Number>
bool ExtractNumber(const std::wstring& token, Number& target) {
    std::wistringstream stream(token);
    stream.imbue(std::locale::classic());
    stream.exceptions(std::ios::badbit);  // a failing allocation is not an unreadable value
    stream >> target;
    return !stream.fail();
}

}  // namespace

std::vector<HeaderTokens> GetHeaderFieldValues(const std::wstring& headerText,
                                               const std::wstring& key) {
    std::vector<HeaderTokens> lines;
    if (key.empty() || key.front() != L'-') return lines;

    Position searchStart = 0;
    for (Position at = 1; at < headerText.size(); ++at) {
        const bool spaceBefore = at > searchStart && IsSpace(headerText[at - 1]);
        if (!spaceBefore || !StandsAt(headerText, at, key)) continue;
        const Position valueStart = at + key.size();
        const Position valueEnd =
            std::min(headerText.find_first_of(L"\r\n#", valueStart), headerText.size());
        if (valueEnd <= valueStart) continue;
        lines.push_back(SplitHeaderValue(headerText.substr(valueStart, valueEnd - valueStart)));
        searchStart = valueEnd;
        at = valueEnd;
    }
    return lines;
}

HeaderTokens SplitHeaderValue(const std::wstring& value) {
    HeaderTokens tokens;
    for (Position at = 0; at < value.size();) {
        if (!IsSpace(value[at])) {
            const auto* end = std::find_if(value.data() + at, value.data() + value.size(), IsSpace);
            tokens.emplace_back(value.data() + at, end);
            at += tokens.back().size();
            continue;
        }
        while (at < value.size() && IsSpace(value[at])) ++at;
        if (at == value.size() || value[at] != L'"') continue;
        const Position close = FindClosingQuote(value, at);
        if (close == std::wstring::npos) continue;
        tokens.push_back(value.substr(at + 1, close - at - 1));
        at = close + 1;
    }
    return tokens;
}

bool ConvertToken(const std::wstring& token, std::uint32_t& target) {
    return ExtractNumber(token, target);
}

bool ConvertToken(const std::wstring& token, std::int32_t& target) {
    return ExtractNumber(token, target);
}

bool ConvertToken(const std::wstring& token, std::int64_t& target) {
    return ExtractNumber(token, target);
}

bool ConvertToken(const std::wstring& token, double& target) {
    return ExtractNumber(token, target);
}

bool ConvertToken(const std::wstring& token, std::wstring& target) {
    const auto begin = std::find_if_not(token.begin(), token.end(), IsSpace);
    if (begin == token.end()) return false;
    target.assign(begin, std::find_if(begin, token.end(), IsSpace));
    return true;
}

std::int32_t VersionStringToNumber(const std::wstring& text) {
    if (text.empty() || !IsDigit(text.front())) return -1;
    // A version is groups of digits with at most one other character between them and at the end.
    for (Position at = 1; at < text.size(); ++at) {
        if (IsDigit(text[at])) continue;
        if (IsLineBreak(text[at]) || !IsDigit(text[at - 1])) return -1;
    }
    std::wstring digits;
    std::remove_copy(text.begin(), text.end(), std::back_inserter(digits), L'.');
    std::int32_t number = -1;
    return ConvertToken(digits, number) ? number : -1;
}

}  // namespace stalwick
