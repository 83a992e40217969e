// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <string_view>

namespace stalwick {

// The event that ended a run early.
enum class Interruption { kNone, kInterrupt, kTerminate, kHangUp };

// From now on the first Ctrl-C, request to terminate or loss of the terminal stores its kind into
// `target` and is otherwise ignored, so that the work can be finished in order; a second one ends
// the process at once. On POSIX systems, a signal that the caller ignores stays ignored. On
// Windows, closing the console counts as losing the terminal, and the end of a session as a request
// to terminate; the system waits some seconds for either. `target` must live as long as the
// process.
void WatchInterruptions(std::atomic<Interruption>& target);

// Ends the process with the interrupt that it had postponed: a shell then stops its loop too, which
// it would not do after an exit status. Does nothing on Windows, where only the status counts.
void EndByInterrupt();

// Prepares the standard streams for UTF-8 text.
void PrepareConsole();

// Writes the bytes to standard output after any buffered text. Both wide and narrow text may use
// the stream before and after. Returns false if not all could be written.
[[nodiscard]] bool WriteToStandardOutput(std::string_view bytes);

[[nodiscard]] bool StandardErrorIsTerminal();

// Columns of the terminal on standard error; 80 if unknown.
[[nodiscard]] int TerminalWidth();

}  // namespace stalwick
