// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace stalwick {

// Finds and converts the fields of a recording's header text. A line is a key that begins with "-",
// blanks and values; docs/ord-format.md has the grammar. White space, digits and letter case are
// ASCII. Every function here takes time linear in the length of the text.

using HeaderTokens = std::vector<std::wstring>;

// The tokens of every line that contains `key`, in the order of the text. A line without a value
// but with something after its key is an empty list. A key is found if white space precedes it, in
// any letter case, also inside a comment and as the beginning of a longer key; its value ends
// before a "#" or the end of the line.
[[nodiscard]] std::vector<HeaderTokens> GetHeaderFieldValues(const std::wstring& headerText,
                                                             const std::wstring& key);

// Splits a value into its tokens: words, or text in double quotes preceded by white space.
[[nodiscard]] HeaderTokens SplitHeaderValue(const std::wstring& value);

// Reads the longest prefix of the token that is a number of the target's type, or its first word.
// Returns false if there is none; the target is then 0 or, for text, unchanged.
bool ConvertToken(const std::wstring& token, std::uint32_t& target);
bool ConvertToken(const std::wstring& token, std::int32_t& target);
bool ConvertToken(const std::wstring& token, std::int64_t& target);
bool ConvertToken(const std::wstring& token, double& target);
bool ConvertToken(const std::wstring& token, std::wstring& target);

// The digits of a version text joined across its full stops: "2.0" is 20, "1.10" is 110, and so
// newer than "2.0". That rule decides which files carry timestamps; do not change it (pinned by
// HeaderFields.VersionOneTenCountsAsOneHundredAndTen). Returns -1 if the text is not a version or
// the number is above 2,147,483,647.
[[nodiscard]] std::int32_t VersionStringToNumber(const std::wstring& text);

}  // namespace stalwick
