#pragma once

#include <atomic>

namespace stalwick {

// What ended a run early.
enum class Interruption { kNone, kInterrupt, kTerminate };

// From now on the first Ctrl-C or request to terminate stores its kind into `target` and is
// otherwise ignored, so that the work can be finished in order; a second one ends the process at
// once. On POSIX systems one that the caller had ignored stays so. `target` must live as long as
// the process.
void WatchInterruptions(std::atomic<Interruption>& target);

// Prepares the standard streams for UTF-8 text.
void PrepareConsole();

bool StandardErrorIsTerminal();

// Columns of the terminal behind standard error; 80 where that is not known.
int TerminalWidth();

}  // namespace stalwick
