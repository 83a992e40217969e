// SPDX-License-Identifier: BSD-3-Clause
#include "cli/print_line.h"

#include "platform/text_encoding.h"

namespace stalwick {

void PrintLine(std::FILE* stream, const std::wstring& text) {
    const std::string line = ToUtf8(OneLine(text)) + "\n";
    std::fwrite(line.data(), 1, line.size(), stream);
}

bool FlushStandardOutput() {
    // A terminal gets each line at once; only ferror() still knows that one was refused.
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

}  // namespace stalwick
