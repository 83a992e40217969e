// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <string>

#include "outputs/file_identity.h"

namespace stalwick {

// The parts of an output's header text; docs/output-files.md lists its lines.

inline constexpr wchar_t kHeaderTitle[] = L"######## Veltrosyn Data File Header";
// In every header until the conversion reaches its end; in those of event files always.
inline constexpr wchar_t kNotClosed[] = L"File was not closed properly";

// A header line: key, blank, value, CR LF.
[[nodiscard]] std::wstring HeaderLine(const std::wstring& key, const std::wstring& value);

// Name of a VtxDataType; "Invalid" for any other value.
[[nodiscard]] std::wstring DataTypeName(std::uint8_t fileType);

// Lower-case hexadecimal in groups of 8-4-4-4-12.
[[nodiscard]] std::wstring FormatUuid(const Uuid& bytes);

// `text` in double quotes; an existing quote is not repeated.
[[nodiscard]] std::wstring QuoteFileName(const std::wstring& text);

// The number as streams print it in that notation, with the same digits on every platform;
// `precision` 6 of `general` is their default.
[[nodiscard]] std::wstring FormatDouble(double value, std::chars_format notation, int precision);

}  // namespace stalwick
