// SPDX-License-Identifier: BSD-3-Clause
#include "platform/program_arguments.h"

#include <memory>

#include "platform/text_encoding.h"
#include "platform/windows/windows_api.h"

// Not in the part of windows.h that windows_api.h includes.
#include <shellapi.h>

namespace stalwick {

namespace {

struct FreeLocal {
    void operator()(wchar_t** memory) const { ::LocalFree(memory); }
};

}  // namespace

// The narrow argv is limited to the machine's code page; the command line is UTF-16.
std::vector<std::string> ProgramArguments(int, char**) {
    int count = 0;
    const std::unique_ptr<wchar_t*, FreeLocal> wide(
        ::CommandLineToArgvW(::GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int i = 1; wide != nullptr && i < count; ++i) {
        arguments.push_back(ToUtf8(wide.get()[i]));
    }
    return arguments;
}

}  // namespace stalwick
