#pragma once

#include <string>
#include <string_view>

namespace stalwick {

// Narrow text is UTF-8 whatever the locale, so that a recording gives the same bytes everywhere.

// A path or a message from its narrow bytes. Bytes that are not UTF-8 become the code units
// U+DC80 to U+DCFF, so that ToUtf8() gives back exactly the bytes that came in.
[[nodiscard]] std::wstring FromUtf8(std::string_view bytes);

// UTF-8 of wide text (UTF-16 where wchar_t has 16 bits); the inverse of FromUtf8().
[[nodiscard]] std::string ToUtf8(std::wstring_view text);

// The text of a recording's header: UTF-8 where all of it is valid UTF-8, else one character a
// byte (Latin-1), so that a stray byte never makes a recording unreadable.
[[nodiscard]] std::wstring DecodeHeaderBytes(std::string_view bytes);

[[nodiscard]] bool IsValidUtf8(std::string_view bytes);

// `text` with control characters written out (a line feed as \n), so that a message stays on one
// line and a file name cannot steer a terminal.
[[nodiscard]] std::wstring OneLine(std::wstring_view text);

}  // namespace stalwick
