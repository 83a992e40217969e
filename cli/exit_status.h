#pragma once

namespace stalwick {

inline constexpr int kExitComplete = 0;       // every output is what it should be
inline constexpr int kExitFailed = 1;         // a conversion failed or an output is incomplete
inline constexpr int kExitUsage = 2;          // wrong arguments, or no output directory
inline constexpr int kExitInterrupted = 130;  // canceled by SIGINT or Ctrl-C
inline constexpr int kExitTerminated = 143;   // canceled by SIGTERM

}  // namespace stalwick
