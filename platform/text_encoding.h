// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <string_view>

namespace stalwick {

// Narrow text is UTF-8 in every locale, so that a recording yields the same bytes everywhere.

// A path or a message from its narrow bytes. Bytes that are not UTF-8 become the code units U+DC80
// to U+DCFF, so that ToUtf8() returns exactly the original bytes.
[[nodiscard]] std::wstring FromUtf8(std::string_view bytes);

// UTF-8 of wide text (UTF-16 if wchar_t has 16 bits); the inverse of FromUtf8().
[[nodiscard]] std::string ToUtf8(std::wstring_view text);

// The text of a recording's header: UTF-8 if all of it is valid UTF-8, otherwise one character per
// byte (Latin-1), so that a stray byte never makes a recording unreadable.
[[nodiscard]] std::wstring DecodeHeaderBytes(std::string_view bytes);

[[nodiscard]] bool IsValidUtf8(std::string_view bytes);

// `text` with control characters escaped (a line feed as \n), so that a message stays on one line
// and a file name cannot control a terminal.
[[nodiscard]] std::wstring OneLine(std::wstring_view text);

}  // namespace stalwick
