#include "platform/console.h"

#include <csignal>

#include <sys/ioctl.h>
#include <unistd.h>

namespace stalwick {

namespace {

std::atomic<std::atomic<Interruption>*> interruptionTarget{nullptr};

extern "C" void StoreInterruption(int signal);

// What the caller ignores is not watched, and stays ignored.
void StopWatching(int signal) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == StoreInterruption) {
        std::signal(signal, SIG_DFL);
    }
}

extern "C" void StoreInterruption(int signal) {
    std::atomic<Interruption>* target = interruptionTarget.load(std::memory_order_relaxed);
    if (target == nullptr) return;
    target->store(signal == SIGINT ? Interruption::kInterrupt : Interruption::kTerminate,
                  std::memory_order_relaxed);
    // Whatever comes next, of either kind, ends the process.
    StopWatching(SIGINT);
    StopWatching(SIGTERM);
}

void Watch(int signal) {
    struct sigaction action {};
    // A caller that lets it be ignored (a shell's background job) has its reasons.
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = StoreInterruption;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

}  // namespace

void WatchInterruptions(std::atomic<Interruption>& target) {
    static_assert(std::atomic<Interruption>::is_always_lock_free);
    interruptionTarget.store(&target);
    Watch(SIGINT);
    Watch(SIGTERM);
}

// Terminals take the bytes as they are.
void PrepareConsole() {}

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
