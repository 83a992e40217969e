#include "logging/console_logger.h"

#include <iostream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace VtxLogging {
namespace {

// What one message looks like on the standard wide output.
std::wstring Logged(std::uint32_t level, const std::wstring& message) {
    std::wostringstream captured;
    std::wstreambuf* const before = std::wcout.rdbuf(captured.rdbuf());
    ConsoleLogger logger;
    ILogFile& log = logger;
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

}  // namespace
}  // namespace VtxLogging
