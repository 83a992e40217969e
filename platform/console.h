#pragma once

#include <atomic>
#include <string_view>

namespace stalwick {

// What ended a run early.
enum class Interruption { kNone, kInterrupt, kTerminate, kHangUp };

// From now on the first Ctrl-C, request to terminate or loss of the terminal stores its kind into
// `target` and is otherwise ignored, so that the work can be finished in order; a second one ends
// the process at once. On POSIX systems one that the caller had ignored stays so. On Windows a
// console that is closed is a lost terminal, the end of a session a request to terminate; the
// system waits some seconds for either. `target` must live as long as the process.
void WatchInterruptions(std::atomic<Interruption>& target);

// Ends the process by the interrupt that it had put off: a shell then stops its loop too, as it
// would not after an exit status. Does nothing on Windows, where only the status counts.
void EndByInterrupt();

// Prepares the standard streams for UTF-8 text.
void PrepareConsole();

// Writes the bytes to standard output after what is buffered for it. The stream is used by wide and
// narrow text alike before and after. False where not all could be written.
[[nodiscard]] bool WriteToStandardOutput(std::string_view bytes);

[[nodiscard]] bool StandardErrorIsTerminal();

// Columns of the terminal behind standard error; 80 where that is not known.
[[nodiscard]] int TerminalWidth();

}  // namespace stalwick
