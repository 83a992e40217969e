#pragma once

#include <cstdio>
#include <string>

namespace stalwick {

// Writes the text and the end of a line, in UTF-8; its control characters are written out.
void PrintLine(std::FILE* stream, const std::wstring& text);

}  // namespace stalwick
