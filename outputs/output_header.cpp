// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/output_header.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "outputs/header_text.h"
#include "outputs/output_format.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr std::wstring_view kLineEnd = L"\r\n";

// The lines that every output has.
constexpr std::array<const wchar_t*, 11> kCommonKeys = {
    L"-FileType",         L"-FileVersion",       L"-FileUUID",   L"-SessionUUID",
    L"-OriginalFileName", L"-TimeCreated",       L"-TimeClosed", L"-RecordSize",
    L"-ApplicationName",  L"-AcquisitionSystem", L"-AcqEntName"};

bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

// "YYYY/MM/DD HH:MM:SS"
bool IsTime(std::wstring_view text) {
    constexpr std::wstring_view kForm = L"0000/00/00 00:00:00";
    return std::equal(
        text.begin(), text.end(), kForm.begin(), kForm.end(),
        [](wchar_t c, wchar_t form) { return IsDigit(form) ? IsDigit(c) : c == form; });
}

}  // namespace

std::wstring OutputHeader::Read(std::string_view block) {
    const std::string_view bytes = block.substr(0, block.find('\0'));
    const std::size_t afterPadding = block.find_first_not_of('\0', bytes.size());
    if (afterPadding != std::string_view::npos) {
        return L"byte " + std::to_wstring(afterPadding) +
               L" of its header, after the text, is not 0";
    }
    OutputHeader header;
    header.text_ = FromUtf8(bytes);
    const std::wstring firstLine = std::wstring(kHeaderTitle).append(kLineEnd);
    if (!header.text_.starts_with(firstLine)) {
        return L"it does not begin like an output of this program";
    }
    if (!header.text_.ends_with(kLineEnd)) return L"the last line of its header has no end";
    for (const wchar_t* key : kCommonKeys) {
        if (!header.Find(key)) return L"its header has no " + std::wstring(key) + L" line";
    }
    *this = std::move(header);
    return {};
}

std::optional<std::wstring> OutputHeader::Find(std::wstring_view key) const {
    const std::wstring lineBeginning = std::wstring(kLineEnd).append(key).append(L" ");
    const auto found = text_.find(lineBeginning);
    if (found == std::wstring::npos) return std::nullopt;
    const auto value = found + lineBeginning.size();
    return text_.substr(value, text_.find(kLineEnd, value) - value);
}

std::optional<std::uint64_t> OutputHeader::Number(std::wstring_view key) const {
    const std::string digits = ToUtf8(Value(key));
    std::uint64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

bool OutputHeader::SaysClosed() const {
    return IsTime(Value(L"-TimeClosed"));
}

}  // namespace stalwick
