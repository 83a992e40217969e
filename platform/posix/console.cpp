#include "platform/console.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace stalwick {

namespace {

std::atomic<std::atomic<Interruption>*> interruptionTarget{nullptr};

extern "C" void StoreInterruption(int signal) {
    std::atomic<Interruption>* target = interruptionTarget.load(std::memory_order_relaxed);
    if (target == nullptr) return;
    target->store(signal == SIGINT ? Interruption::kInterrupt : Interruption::kTerminate,
                  std::memory_order_relaxed);
    // Whatever comes next, of either kind, ends the process.
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

void Watch(int signal) {
    struct sigaction action {};
    action.sa_handler = StoreInterruption;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

// A standard stream that the caller closed would be the number of the next file that is opened, and
// a message to it would go into that file. In its place comes a file that takes nothing.
void OccupyClosedStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace

void WatchInterruptions(std::atomic<Interruption>& target) {
    static_assert(std::atomic<Interruption>::is_always_lock_free);
    interruptionTarget.store(&target);
    Watch(SIGINT);
    Watch(SIGTERM);
}

void PrepareConsole() {
    // A reader that went away (a closed pipe) is an error of that write, not the end of the run.
    std::signal(SIGPIPE, SIG_IGN);
    // So is a file that reaches the limit of its size (ulimit -f).
    std::signal(SIGXFSZ, SIG_IGN);
    OccupyClosedStreams();
}

bool StandardErrorIsTerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

int TerminalWidth() {
    constexpr int kUsualWidth = 80;
    struct winsize size {};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
    return size.ws_col;
}

}  // namespace stalwick
