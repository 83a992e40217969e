// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/reference_header.h"

#include <locale>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

namespace stalwick::test {
namespace {

std::wregex CompilePattern(const std::wstring& pattern, std::regex::flag_type flags) {
    std::wregex compiled;
    // White space, digits and letter case are those of ASCII, in every locale.
    compiled.imbue(std::locale::classic());
    compiled.assign(pattern, flags);
    return compiled;
}

// Compiling takes longer than reading a header. What \s and \d mean for wide text depends on the C
// library, so these are written out.
const std::wregex& LinePattern(const std::wstring& key) {
    static std::map<std::wstring, std::wregex> patterns;
    auto pattern = patterns.find(key);
    if (pattern == patterns.end()) {
        pattern = patterns
                      .emplace(key, CompilePattern(L"[ \\t\\n\\v\\f\\r]+" + key + L"([^\r\n#]+)",
                                                   std::regex::ECMAScript | std::regex::icase))
                      .first;
    }
    return pattern->second;
}

template <typename Value>
bool ConvertToken(const std::wstring& token, Value& target) {
    std::wistringstream stream(token);
    stream.imbue(std::locale::classic());
    stream >> target;
    return !stream.fail();
}

/** The first token of the first line; false with the error's text if there is none. */
template <typename Value>
bool TakeField(const std::wstring& headerText, const std::wstring& key, Value& target,
               std::wstring& errorText) {
    const auto lines = ReferenceHeaderFieldValues(headerText, key);
    if (lines.empty() || lines[0].empty()) {
        errorText = L"Error retrieving header field " + key;
        return false;
    }
    // A value that cannot be read is not an error.
    ConvertToken(lines[0][0], target);
    return true;
}

bool TakeRequiredFields(const std::wstring& headerText, ReferenceHeaderFields& fields) {
    std::wstring& error = fields.errorText;
    if (!TakeField(headerText, L"-NumADChannels", fields.numADChannels, error)) return false;
    if (!TakeField(headerText, L"-SamplingFrequency", fields.samplingFrequency, error))
        return false;
    if (!TakeField(headerText, L"-ADMaxValue", fields.adMaxValue, error)) return false;
    if (!TakeField(headerText, L"-ADBitVolts", fields.adBitVolts, error)) return false;
    if (!TakeField(headerText, L"-InputRange", fields.inputRange, error)) return false;
    if (!TakeField(headerText, L"-FileVersion", fields.fileVersion, error)) return false;
    fields.versionNumber = ReferenceVersionNumber(fields.fileVersion);
    if (fields.versionNumber < 20) return true;
    return TakeField(headerText, L"-UTCOffsetMicroseconds", fields.utcOffsetMicroseconds, error);
}

/** One UTF-8 sequence from `position` on, or nothing if it is not valid. */
std::optional<char32_t> TakeUtf8(std::string_view bytes, std::size_t& position) {
    const auto lead = static_cast<unsigned char>(bytes[position++]);
    if (lead < 0x80) return lead;
    const unsigned count = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4) return std::nullopt;
    char32_t value = lead & (0x3FU >> count);
    for (unsigned i = 0; i < count; ++i) {
        if (position >= bytes.size()) return std::nullopt;
        const auto next = static_cast<unsigned char>(bytes[position++]);
        if ((next & 0xC0U) != 0x80U) return std::nullopt;
        value = (value << 6) | (next & 0x3FU);
    }
    const char32_t smallest = count == 3 ? 0x10000 : count == 2 ? 0x800 : 0x80;
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < smallest || value > 0x10FFFF || isSurrogate) return std::nullopt;
    return value;
}

void AppendWide(std::wstring& text, char32_t value) {
    if (sizeof(wchar_t) == 2 && value > 0xFFFF) {
        text.push_back(static_cast<wchar_t>(0xD800 + ((value - 0x10000) >> 10)));
        text.push_back(static_cast<wchar_t>(0xDC00 + ((value - 0x10000) & 0x3FF)));
    } else {
        text.push_back(static_cast<wchar_t>(value));
    }
}

std::optional<std::wstring> TextFromUtf8(std::string_view bytes) {
    std::wstring text;
    for (std::size_t position = 0; position < bytes.size();) {
        const std::optional<char32_t> value = TakeUtf8(bytes, position);
        if (!value) return std::nullopt;
        AppendWide(text, *value);
    }
    return text;
}

}  // namespace

std::vector<std::vector<std::wstring>> ReferenceHeaderFieldValues(const std::wstring& headerText,
                                                                  const std::wstring& key) {
    std::vector<std::vector<std::wstring>> lines;
    if (key.empty() || key[0] != L'-') return lines;
    const std::wregex& linePattern = LinePattern(key);
    static const std::wregex tokenPattern = CompilePattern(
        L"[ \\t\\n\\v\\f\\r]+\"([^\"]+)\"|([^ \\t\\n\\v\\f\\r]+)", std::regex::ECMAScript);
    using Matches = std::wsregex_iterator;
    for (Matches line(headerText.begin(), headerText.end(), linePattern); line != Matches();
         ++line) {
        const std::wstring value = (*line)[1].str();
        std::vector<std::wstring> tokens;
        for (Matches token(value.begin(), value.end(), tokenPattern); token != Matches(); ++token) {
            tokens.push_back((*token)[1].matched ? (*token)[1].str() : (*token)[2].str());
        }
        lines.push_back(tokens);
    }
    return lines;
}

std::int32_t ReferenceVersionNumber(const std::wstring& text) {
    static const std::wregex version = CompilePattern(L"(([0-9]+)(.?))+", std::regex::ECMAScript);
    if (!std::regex_match(text, version)) return -1;
    std::wstring digits;
    for (const wchar_t character : text) {
        if (character != L'.') digits.push_back(character);
    }
    std::int32_t number = -1;
    return ConvertToken(digits, number) ? number : -1;
}

ReferenceHeaderFields ReferenceReadHeaderFields(const std::wstring& headerText) {
    ReferenceHeaderFields fields;
    if (!TakeRequiredFields(headerText, fields)) return fields;
    std::wstring ignoredError;
    TakeField(headerText, L"-SessionUUID", fields.sessionUuid, ignoredError);

    const auto systems = ReferenceHeaderFieldValues(headerText, L"-AcquisitionSystem");
    if (!systems.empty() && systems[0].size() > 1) fields.acquisitionSystem = systems[0][1];

    std::int32_t flag = 0;  // shared by the three and not reset between them
    const auto ultrasonic = ReferenceHeaderFieldValues(headerText, L"-UltrasonicAvailable");
    if (!ultrasonic.empty() && !ultrasonic[0].empty()) {
        ConvertToken(ultrasonic[0][0], flag);
        fields.ultrasonicAvailable = flag == 1;
    }
    // Unlike the one above, these two need exactly one token.
    const auto base = ReferenceHeaderFieldValues(headerText, L"-BaseIMUAvailable");
    if (!base.empty() && base[0].size() == 1) {
        ConvertToken(base[0][0], flag);
        fields.baseImuAvailable = flag == 1;
    }
    const auto afe = ReferenceHeaderFieldValues(headerText, L"-AfeIMUAvailable");
    if (!afe.empty() && afe[0].size() == 1) {
        ConvertToken(afe[0][0], flag);
        fields.afeImuAvailable = flag == 1;
    }
    return fields;
}

std::wstring ReferenceHeaderText(std::string_view headerBlock) {
    const std::string_view bytes = headerBlock.substr(0, headerBlock.find('\0'));
    if (const auto text = TextFromUtf8(bytes)) return *text;
    std::wstring text;
    for (const char byte : bytes) {
        text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
    }
    return text;
}

std::string ReferenceUtf8(const std::wstring& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto value = static_cast<char32_t>(text[i]);
        if (value >= 0xD800 && value <= 0xDBFF && i + 1 < text.size()) {
            value =
                0x10000 + ((value - 0xD800) << 10) + (static_cast<char32_t>(text[++i]) - 0xDC00);
        }
        const unsigned count = value < 0x80 ? 0 : value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
        const unsigned leadMarks[] = {0x00, 0xC0, 0xE0, 0xF0};
        bytes.push_back(static_cast<char>(leadMarks[count] | (value >> (6 * count))));
        for (unsigned next = count; next > 0; --next) {
            bytes.push_back(static_cast<char>(0x80U | ((value >> (6 * (next - 1))) & 0x3FU)));
        }
    }
    return bytes;
}

}  // namespace stalwick::test
