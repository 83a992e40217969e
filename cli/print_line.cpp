// SPDX-License-Identifier: BSD-3-Clause
#include "cli/print_line.h"

#include "platform/text_encoding.h"

namespace stalwick {

void PrintLine(std::FILE* stream, const std::wstring& text) {
    const std::string line = ToUtf8(OneLine(text)) + "\n";
    std::fwrite(line.data(), 1, line.size(), stream);
}

}  // namespace stalwick
