// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <exception>
#include <new>

#include "cli/convert_command.h"
#include "cli/exit_status.h"
#include "engine/out_of_memory.h"
#include "platform/console.h"
#include "platform/process_setup.h"
#include "platform/program_arguments.h"

int main(int argc, char** argv) {
    stalwick::PrepareProcess();
    stalwick::PrepareConsole();
    try {
        const int status = stalwick::RunConvertCommand(stalwick::ProgramArguments(argc, argv));
        if (status == stalwick::kExitInterrupted) stalwick::EndByInterrupt();
        return status;
    } catch (const std::bad_alloc&) {
        std::puts(stalwick::kStatusOutOfMemory);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "stalwick-convert: %s\n", error.what());
    }
    return stalwick::kExitFailed;
}
