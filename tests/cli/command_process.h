// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/support/temp_directory.h"

namespace stalwick::test {

/** How a command ended and what it wrote. */
struct CommandResult {
    int exitStatus = -1;  // -1: ended by a signal
    int signal = 0;
    std::string output;
    std::string error;
};

/** How to run the command. */
struct CommandSetup {
    std::wstring workingDirectory;                // empty: this process's
    std::optional<std::size_t> largestFileBytes;  // writes beyond it fail
    std::string outputPath;                       // of standard output; empty: kept for the result
    bool terminal = false;                        // standard error is a terminal
    int terminalColumns = 80;
    std::function<void()> prepare;  // called in the new process before it becomes the command
};

/** The built stalwick-convert as a separate process. POSIX systems only. */
class CommandProcess {
  public:
    explicit CommandProcess(const std::vector<std::string>& arguments,
                            const CommandSetup& setup = {});
    ~CommandProcess();
    CommandProcess(const CommandProcess&) = delete;
    CommandProcess& operator=(const CommandProcess&) = delete;

    pid_t Pid() const { return pid_; }
    void Signal(int signal) const;
    /** True when it ended; does not wait. */
    bool Ended();
    CommandResult Wait();

  private:
    void RunChild(const std::vector<std::string>& arguments, const CommandSetup& setup, int error);
    void ReadTerminal();
    void Keep(int status);

    TempDirectory directory_;
    pid_t pid_ = -1;
    int terminal_ = -1;  // the side of the terminal that sees the output
    bool keepsOutput_ = true;
    bool ended_ = false;
    CommandResult result_;
};

CommandResult RunCommand(const std::vector<std::string>& arguments, const CommandSetup& setup = {});

/** The lines of what a command wrote. */
std::ptrdiff_t LineCount(const std::string& text);

}  // namespace stalwick::test
