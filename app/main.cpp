// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>

#include "app/stalwick_app.h"
#include "app/start_options.h"
#include "platform/process_setup.h"
#include "platform/program_arguments.h"

namespace {

int Print(const std::string& text) {
    return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    stalwick::PrepareProcess();
    // Before an application exists: without a display, constructing one ends the program.
    const auto answer =
        stalwick::AnswerOnStandardOutput(stalwick::ProgramArguments(argumentCount, arguments));
    if (answer) return Print(*answer);
    stalwick::StalwickApp app(argumentCount, arguments);  // removes Qt's own arguments
    return app.InitInstance(stalwick::ProgramArguments(argumentCount, arguments));
}
