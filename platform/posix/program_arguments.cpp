// SPDX-License-Identifier: BSD-3-Clause
#include "platform/program_arguments.h"

namespace stalwick {

std::vector<std::string> ProgramArguments(int argc, char** argv) {
    if (argc <= 1) return {};
    return {argv + 1, argv + argc};
}

}  // namespace stalwick
