// SPDX-License-Identifier: BSD-3-Clause
#include <atomic>
#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/console.h"
#include "platform/windows/windows_api.h"

namespace stalwick {
namespace {

std::atomic<Interruption> target{Interruption::kNone};

// Starts what the system itself starts, on another thread, when the console notifies a process of
// an event. (wine sends only Ctrl-C, and only from a terminal.)
HANDLE SendControlEvent(DWORD event) {
    const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernelbase.dll"), "CtrlRoutine")));
    if (routine == nullptr) return nullptr;
    return ::CreateThread(nullptr, 0, routine, reinterpret_cast<void*>(DWORD_PTR{event}), 0,
                          nullptr);
}

bool EventIsHandled(DWORD event) {
    constexpr DWORD kPatienceMilliseconds = 10000;
    const HANDLE thread = SendControlEvent(event);
    const bool ended = ::WaitForSingleObject(thread, kPatienceMilliseconds) == WAIT_OBJECT_0;
    ::CloseHandle(thread);
    return ended;
}

void Watch() {
    target.store(Interruption::kNone);
    WatchInterruptions(target);
}

TEST(WindowsConsoleTest, CtrlCAsksForCancelAndTheProcessContinues) {
    Watch();
    EXPECT_TRUE(EventIsHandled(CTRL_C_EVENT));
    EXPECT_EQ(target.load(), Interruption::kInterrupt);
}

TEST(WindowsConsoleTest, CtrlBreakAsksForCancelAndTheProcessContinues) {
    Watch();
    EXPECT_TRUE(EventIsHandled(CTRL_BREAK_EVENT));
    EXPECT_EQ(target.load(), Interruption::kInterrupt);
}

// In a separate process: the system's thread is blocked for good.
TEST(WindowsConsoleDeathTest, ClosingTheConsoleIsALostTerminalAndHoldsTheSystemBack) {
    constexpr int kHeldBack = 78;
    const auto closeConsole = [] {
        Watch();
        const HANDLE thread = SendControlEvent(CTRL_CLOSE_EVENT);
        while (target.load() == Interruption::kNone) ::Sleep(1);
        const bool heldBack = ::WaitForSingleObject(thread, 100) == WAIT_TIMEOUT;
        std::_Exit(heldBack && target.load() == Interruption::kHangUp ? kHeldBack : 0);
    };
    EXPECT_EXIT(closeConsole(), testing::ExitedWithCode(kHeldBack), "");
}

TEST(WindowsConsoleDeathTest, SecondRequestEndsTheProcessAtOnce) {
    constexpr int kSurvived = 77;
    const auto requestTwice = [] {
        Watch();
        EventIsHandled(CTRL_BREAK_EVENT);
        EventIsHandled(CTRL_BREAK_EVENT);
        std::_Exit(kSurvived);
    };
    EXPECT_EXIT(
        requestTwice(), [](int status) { return status != kSurvived; }, "");
}

}  // namespace
}  // namespace stalwick
