// SPDX-License-Identifier: BSD-3-Clause
#include "platform/paths.h"

#include <string>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

std::wstring NameOf(const std::wstring& path) {
    return SplitPath(path).name;
}

TEST(Paths, ExtensionStartsAtTheLastPointOfTheName) {
    EXPECT_EQ(NameOf(L"/d/a.ord"), L"a");
    EXPECT_EQ(NameOf(L"/d/a.b.ord"), L"a.b");
    EXPECT_EQ(SplitPath(L"/d/a.b.ord").extension, L".ord");
}

TEST(Paths, NameThatIsOnlyAnExtensionIsEmpty) {
    EXPECT_EQ(NameOf(L"/d/.ord"), L"");
    EXPECT_EQ(SplitPath(L"/d/.ord").extension, L".ord");
}

TEST(Paths, NameWithoutAPointHasNoExtension) {
    EXPECT_EQ(NameOf(L"/d.x/plain"), L"plain");
    EXPECT_EQ(SplitPath(L"/d.x/plain").extension, L"");
}

TEST(Paths, NameMayBeAlone) {
    EXPECT_EQ(NameOf(L"a.ord"), L"a");
    EXPECT_EQ(SplitPath(L"a.ord").directory, L"");
    EXPECT_EQ(NameOf(L""), L"");
}

TEST(Paths, PartsJoinedAreThePathAgain) {
    for (const std::wstring path :
         {L"/d/a.ord", L"a", L"", L"/", L"a//b/.c", L"x.y/z.", L"../.."}) {
        const PathParts parts = SplitPath(path);
        EXPECT_EQ(parts.drive + parts.directory + parts.name + parts.extension, path);
    }
}

TEST(Paths, ParentDirectoryHasNoSeparatorAtItsEndUnlessItIsTheRoot) {
    EXPECT_EQ(ParentDirectory(L"/a/b/c.d"), L"/a/b");
    EXPECT_EQ(ParentDirectory(L"/a/b//"), L"/a");
    EXPECT_EQ(ParentDirectory(L"/c.d"), L"/");
    EXPECT_EQ(ParentDirectory(L"/"), L"/");
    EXPECT_EQ(ParentDirectory(L"a/c.d"), L"a");
    EXPECT_EQ(ParentDirectory(L"c.d"), L".");
    EXPECT_EQ(ParentDirectory(L""), L".");
}

TEST(Paths, SeparatorEndsTheDirectory) {
    EXPECT_EQ(SplitPath(L"/a/b/c.d").directory, L"/a/b/");
    EXPECT_EQ(LastSeparator(L"/a/b"), 2U);
    EXPECT_EQ(LastSeparator(L"ab"), std::wstring::npos);
    const std::wstring joined = std::wstring(L"a") + kPathSeparator + L"b";
    EXPECT_EQ(LastSeparator(joined), 1U);
}

}  // namespace
}  // namespace stalwick
