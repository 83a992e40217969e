// SPDX-License-Identifier: BSD-3-Clause
#include "platform/console.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace stalwick {

namespace {

std::atomic<std::atomic<Interruption>*> interruptionTarget{nullptr};

constexpr std::array kWatchedSignals = {SIGINT, SIGTERM, SIGHUP};

extern "C" void StoreInterruption(int signal);

// Signals that the caller ignores are not watched, and stay ignored.
void StopWatching(int signal) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == StoreInterruption) {
        std::signal(signal, SIG_DFL);
    }
}

Interruption KindOf(int signal) {
    if (signal == SIGINT) return Interruption::kInterrupt;
    return signal == SIGHUP ? Interruption::kHangUp : Interruption::kTerminate;
}

extern "C" void StoreInterruption(int signal) {
    std::atomic<Interruption>* target = interruptionTarget.load(std::memory_order_relaxed);
    if (target == nullptr) return;
    // The interrupted thread may be about to read errno.
    const int savedError = errno;
    target->store(KindOf(signal), std::memory_order_relaxed);
    // The next signal, of any kind, ends the process.
    for (const int watched : kWatchedSignals) StopWatching(watched);
    errno = savedError;
}

void Watch(int signal) {
    struct sigaction action {};
    // A caller that ignores it (a shell's background job) has its reasons.
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
    for (const int signal : kWatchedSignals) Watch(signal);
}

void EndByInterrupt() {
    std::fflush(nullptr);  // death by a signal does not flush
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
}

// Terminals accept the bytes directly.
void PrepareConsole() {}

// Bypasses the stream, whose first text makes it a wide or a narrow one for good.
bool WriteToStandardOutput(std::string_view bytes) {
    if (std::fflush(stdout) != 0) return false;
    while (!bytes.empty()) {
        const ssize_t count = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
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
