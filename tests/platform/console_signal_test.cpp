// SPDX-License-Identifier: BSD-3-Clause

// A signal does not disturb the work that it interrupts. Linux only.

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include "platform/console.h"

namespace stalwick {
namespace {

// From now on, the system refuses what a handler requests when it stops watching its signals.
bool RefuseSignalActions() {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_rt_sigaction, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter = {sizeof program / sizeof *program, program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// In a separate process, which keeps the filter.
TEST(ConsoleSignalDeathTest, SignalKeepsTheErrorOfTheWorkThatItInterrupts) {
    constexpr int kKept = 78;
    const auto interrupt = [] {
        static std::atomic<Interruption> target{Interruption::kNone};
        std::signal(SIGTERM, SIG_DFL);
        WatchInterruptions(target);
        if (!RefuseSignalActions()) std::_Exit(1);
        errno = ENOENT;
        std::raise(SIGTERM);
        std::_Exit(errno == ENOENT && target.load() == Interruption::kTerminate ? kKept : 0);
    };
    EXPECT_EXIT(interrupt(), testing::ExitedWithCode(kKept), "");
}

}  // namespace
}  // namespace stalwick
