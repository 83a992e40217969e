#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace stalwick {

// Looking up and converting the fields of a recording's header text. A line is a key that begins
// with "-", blanks and values; docs/ord-format.md has the grammar. White space, digits and letter
// case are ASCII. Every function here takes time linear in the text's length.

using HeaderTokens = std::vector<std::wstring>;

// The tokens of every line that carries `key`, in the text's order; a line without a value but
// with something behind its key is an empty list. A key is found when white space stands before
// it, in any letter case, also inside a comment and as the beginning of a longer key; its value
// ends before a "#" or the line's end.
[[nodiscard]] std::vector<HeaderTokens> GetHeaderFieldValues(const std::wstring& headerText,
                                                             const std::wstring& key);

// Splits a value into its tokens: words, or text in double quotes that white space precedes.
[[nodiscard]] HeaderTokens SplitHeaderValue(const std::wstring& value);

// Reads the longest prefix of the token that is a number of the target's type, or its first word.
// False when there is none; the target is then 0 or, for text, what it was.
bool ConvertToken(const std::wstring& token, std::uint32_t& target);
bool ConvertToken(const std::wstring& token, std::int32_t& target);
bool ConvertToken(const std::wstring& token, std::int64_t& target);
bool ConvertToken(const std::wstring& token, double& target);
bool ConvertToken(const std::wstring& token, std::wstring& target);

// The digits of a version text joined across its full stops: "2.0" is 20, "1.10" is 110, and so
// newer than "2.0". That rule decides which files carry timestamps and stays as it is (pinned by
// HeaderFields.VersionOneTenCountsAsOneHundredAndTen). -1 when the text is no version or the
// number is above 2,147,483,647.
[[nodiscard]] std::int32_t VersionStringToNumber(const std::wstring& text);

}  // namespace stalwick
