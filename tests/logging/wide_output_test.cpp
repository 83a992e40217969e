// SPDX-License-Identifier: BSD-3-Clause

// Messages of a program that also writes wide text itself. The first wide character makes standard
// output a wide stream, which then accepts no narrow text; this only shows in a separate process.

#include <cstdio>
#include <cstdlib>
#include <iostream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "logging/console_logger.h"

namespace VtxLogging {
namespace {

// The test sees what a process writes to standard error, so standard output goes there and standard
// error nowhere. After reopening, the stream is neither narrow nor wide.
void ShowStandardOutput() {
    if (std::freopen("/dev/fd/2", "a", stdout) == nullptr) std::exit(1);
    ::close(STDERR_FILENO);
}

[[noreturn]] void LogBetweenWideTexts() {
    ShowStandardOutput();
    std::wcout << L"wide before\n";
    consoleLogger.Log(1, L"\u00E9");
    std::wcout << L"wide after\n" << std::flush;
    std::exit(std::wcout.good() ? 0 : 2);
}

[[noreturn]] void LogBeforeWideText() {
    ShowStandardOutput();
    consoleLogger.Log(3, L"first");
    std::wcout << L"wide after\n" << std::flush;
    std::exit(std::wcout.good() ? 0 : 2);
}

TEST(WideOutputDeathTest, MessageReachesStandardOutputInOrderAfterTheProgramHasUsedWcout) {
    EXPECT_EXIT(LogBetweenWideTexts(), testing::ExitedWithCode(0),
                "wide before\n-\\*  ERROR  \\*- \xC3\xA9\r\nwide after\n");
}

TEST(WideOutputDeathTest, MessageLeavesWcoutUsable) {
    EXPECT_EXIT(LogBeforeWideText(), testing::ExitedWithCode(0), "first\r\nwide after\n");
}

}  // namespace
}  // namespace VtxLogging
