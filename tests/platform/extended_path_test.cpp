// SPDX-License-Identifier: BSD-3-Clause
#include "platform/extended_path.h"

#include <gtest/gtest.h>

namespace stalwick {
namespace {

std::wstring LongTail(std::size_t length) {
    return std::wstring(length, L'x');
}

TEST(ExtendedPathTest, ShortPathIsUnchanged) {
    EXPECT_EQ(ExtendedLengthPath(L"C:\\rec\\a.ord"), L"C:\\rec\\a.ord");
    EXPECT_EQ(ExtendedLengthPath(L""), L"");
}

TEST(ExtendedPathTest, PrefixBeginsWhereADirectoryBecomesTooLong) {
    const std::wstring longest = L"C:\\" + LongTail(244);
    ASSERT_EQ(longest.size(), 247U);
    EXPECT_EQ(ExtendedLengthPath(longest), longest);
    EXPECT_EQ(ExtendedLengthPath(longest + L"y"), L"\\\\?\\" + longest + L"y");
}

TEST(ExtendedPathTest, LongDrivePathGetsThePrefix) {
    const std::wstring path = L"Z:\\rec\\" + LongTail(300);
    EXPECT_EQ(ExtendedLengthPath(path), L"\\\\?\\" + path);
}

TEST(ExtendedPathTest, LongSharePathGetsTheUncPrefix) {
    const std::wstring tail = LongTail(300);
    EXPECT_EQ(ExtendedLengthPath(L"\\\\server\\share\\" + tail),
              L"\\\\?\\UNC\\server\\share\\" + tail);
}

TEST(ExtendedPathTest, PathWithAPrefixIsUnchanged) {
    const std::wstring literal = L"\\\\?\\C:\\" + LongTail(300);
    const std::wstring device = L"\\\\.\\pipe\\" + LongTail(300);
    EXPECT_EQ(ExtendedLengthPath(literal), literal);
    EXPECT_EQ(ExtendedLengthPath(device), device);
}

TEST(ExtendedPathTest, PathThatIsNotAbsoluteIsUnchanged) {
    const std::wstring relative = LongTail(300);
    const std::wstring driveRelative = L"C:" + LongTail(300);
    EXPECT_EQ(ExtendedLengthPath(relative), relative);
    EXPECT_EQ(ExtendedLengthPath(driveRelative), driveRelative);
}

TEST(ExtendedPathTest, WorkingDirectoryCountsTowardsTheLimit) {
    EXPECT_FALSE(MayNeedExtendedLength(LongTail(100), 146));
    EXPECT_TRUE(MayNeedExtendedLength(LongTail(100), 147));
}

}  // namespace
}  // namespace stalwick
