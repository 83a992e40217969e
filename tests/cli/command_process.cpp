// SPDX-License-Identifier: BSD-3-Clause
#include "tests/cli/command_process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/text_encoding.h"

namespace stalwick::test {
namespace {

int OpenForWriting(const std::string& path) {
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
}

void LimitFileSize(std::size_t bytes) {
    // Ignored, so that the write fails instead of ending the program.
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace

CommandProcess::CommandProcess(const std::vector<std::string>& arguments,
                               const CommandSetup& setup) {
    int error = -1;
    if (setup.terminal) {
        winsize size{};
        size.ws_col = static_cast<unsigned short>(setup.terminalColumns);
        if (::openpty(&terminal_, &error, nullptr, nullptr, &size) != 0) {
            throw std::runtime_error("cannot open a pseudo-terminal");
        }
    } else {
        error = OpenForWriting(ToUtf8(directory_.Path(L"err")));
    }
    keepsOutput_ = setup.outputPath.empty();
    pid_ = ::fork();
    if (pid_ == 0) RunChild(arguments, setup, error);
    ::close(error);
    if (pid_ < 0) throw std::runtime_error("cannot start the command");
}

void CommandProcess::RunChild(const std::vector<std::string>& arguments, const CommandSetup& setup,
                              int error) {
    const int output =
        OpenForWriting(keepsOutput_ ? ToUtf8(directory_.Path(L"out")) : setup.outputPath);
    ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(error, STDERR_FILENO);
    std::vector<char*> words = {const_cast<char*>(STALWICK_CONVERT_COMMAND)};
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(&argument[0]));
    words.push_back(nullptr);
    if (!setup.workingDirectory.empty() && ::chdir(ToUtf8(setup.workingDirectory).c_str()) != 0) {
        ::_exit(126);
    }
    if (setup.largestFileBytes) LimitFileSize(*setup.largestFileBytes);
    // A shell's background job, which these tests may be, ignores them.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
    if (setup.prepare) setup.prepare();
    ::execv(words[0], words.data());
    ::_exit(127);
}

CommandProcess::~CommandProcess() {
    if (!ended_ && pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    if (terminal_ >= 0) ::close(terminal_);
}

void CommandProcess::Signal(int signal) const {
    ::kill(pid_, signal);
}

bool CommandProcess::Ended() {
    int status = 0;
    if (!ended_ && ::waitpid(pid_, &status, WNOHANG) == pid_) Keep(status);
    return ended_;
}

void CommandProcess::ReadTerminal() {
    char bytes[4096];
    for (;;) {
        const ssize_t count = ::read(terminal_, bytes, sizeof bytes);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;  // the command closed its side
        result_.error.append(bytes, static_cast<std::size_t>(count));
    }
}

void CommandProcess::Keep(int status) {
    ended_ = true;
    if (WIFEXITED(status)) result_.exitStatus = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result_.signal = WTERMSIG(status);
    // A process killed at its very start has created no file for its output.
    if (keepsOutput_ && Exists(directory_.Path(L"out")))
        result_.output = ReadFile(directory_.Path(L"out"));
    if (terminal_ < 0) result_.error = ReadFile(directory_.Path(L"err"));
}

CommandResult CommandProcess::Wait() {
    if (terminal_ >= 0) ReadTerminal();
    int status = 0;
    while (!ended_) {
        if (::waitpid(pid_, &status, 0) == pid_) Keep(status);
    }
    return result_;
}

CommandResult RunCommand(const std::vector<std::string>& arguments, const CommandSetup& setup) {
    return CommandProcess(arguments, setup).Wait();
}

std::ptrdiff_t LineCount(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

}  // namespace stalwick::test
