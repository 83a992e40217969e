// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdio>
#include <string>

namespace stalwick {

// Writes the text and the end of a line, in UTF-8; control characters in it are escaped.
void PrintLine(std::FILE* stream, const std::wstring& text);

// Writes out what was printed on standard output; false if any of it since the start is lost.
[[nodiscard]] bool FlushStandardOutput();

}  // namespace stalwick
