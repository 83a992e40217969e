// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <exception>
#include <new>

#include "cli/exit_status.h"
#include "cli/inspect_command.h"
#include "platform/console.h"
#include "platform/process_setup.h"
#include "platform/program_arguments.h"

int main(int argc, char** argv) {
    stalwick::PrepareProcess();
    stalwick::PrepareConsole();
    try {
        return stalwick::RunInspectCommand(stalwick::ProgramArguments(argc, argv));
    } catch (const std::bad_alloc&) {
        std::fputs("stalwick-inspect: not enough memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "stalwick-inspect: %s\n", error.what());
    }
    return stalwick::kExitFailed;
}
