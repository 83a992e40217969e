#pragma once

#include <string>
#include <vector>

namespace stalwick {

// The arguments behind the program's name, narrow (UTF-8; other bytes as they came).
[[nodiscard]] std::vector<std::string> ProgramArguments(int argc, char** argv);

}  // namespace stalwick
