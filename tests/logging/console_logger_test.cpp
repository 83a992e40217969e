// SPDX-License-Identifier: BSD-3-Clause
#include "logging/console_logger.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/logging/another_unit.h"

namespace VtxLogging {
namespace {

// The form of one message on the standard wide output.
std::wstring Logged(std::uint32_t level, const std::wstring& message) {
    std::wostringstream captured;
    std::wstreambuf* const before = std::wcout.rdbuf(captured.rdbuf());
    ILogFile& log = consoleLogger;
    EXPECT_EQ(log.Log(level, message), 0);
    std::wcout.rdbuf(before);
    return captured.str();
}

TEST(ConsoleLogger, EveryLevelHasItsBannerOfFourteenCharacters) {
    EXPECT_EQ(Logged(0, L"m"), L"-*  FATAL  *- m\r\n");
    EXPECT_EQ(Logged(1, L"m"), L"-*  ERROR  *- m\r\n");
    EXPECT_EQ(Logged(2, L"m"), L"-* WARNING *- m\r\n");
    EXPECT_EQ(Logged(3, L"m"), L"-* NOTICE  *- m\r\n");
    EXPECT_EQ(Logged(4, L"m"), L"-*  DATA   *- m\r\n");
    EXPECT_EQ(Logged(5, L"m"), L"-*  DEBUG  *- m\r\n");
}

TEST(ConsoleLogger, AnyOtherLevelIsUnknown) {
    EXPECT_EQ(Logged(6, L"m"), L"-* UNKNOWN *- m\r\n");
    EXPECT_EQ(Logged(4294967295U, L"m"), L"-* UNKNOWN *- m\r\n");
}

TEST(ConsoleLogger, AnEmptyMessageIsItsBannerAlone) {
    EXPECT_EQ(Logged(3, L""), L"-* NOTICE  *- \r\n");
}

TEST(ConsoleLogger, EverySourceUnitHasItsOwn) {
    ILogFile& other = stalwick::test::LoggerOfAnotherUnit();
    EXPECT_NE(&other, static_cast<ILogFile*>(&consoleLogger));
    EXPECT_NE(dynamic_cast<ConsoleLogger*>(&other), nullptr);
}

// The programs never choose a locale, so theirs has no character beyond ASCII.
TEST(ConsoleLogger, CharactersThatTheLocaleLacksReachStandardOutputAndSilenceNothing) {
    testing::internal::CaptureStdout();
    std::fputs("narrow text before\n", stdout);
    EXPECT_EQ(consoleLogger.Log(1, L"r\u00E9c \u65E5 \U0001F987"), 0);
    EXPECT_EQ(consoleLogger.Log(3, L"the next one"), 0);
    std::fputs("narrow text after\n", stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "narrow text before\n"
              "-*  ERROR  *- r\xC3\xA9"
              "c \xE6\x97\xA5 \xF0\x9F\xA6\x87\r\n"
              "-* NOTICE  *- the next one\r\n"
              "narrow text after\n");
}

}  // namespace
}  // namespace VtxLogging
