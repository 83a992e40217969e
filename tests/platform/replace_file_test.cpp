// SPDX-License-Identifier: BSD-3-Clause
#include "platform/replace_file.h"

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/system_error.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

const std::set<std::string> kOnlyTheFile = {"a.json"};

TEST(ReplaceFile, PutsTheContentsWhereNothingWas) {
    const TempDirectory directory;
    EXPECT_EQ(ReplaceFile(directory.Path(L"a.json"), "new"), 0);
    EXPECT_EQ(ReadFile(directory.Path(L"a.json")), "new");
    EXPECT_EQ(NamesIn(directory.Path()), kOnlyTheFile);
}

TEST(ReplaceFile, TakesThePlaceOfALongerFile) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a.json"), "the old contents");
    EXPECT_EQ(ReplaceFile(directory.Path(L"a.json"), "new"), 0);
    EXPECT_EQ(ReadFile(directory.Path(L"a.json")), "new");
    EXPECT_EQ(NamesIn(directory.Path()), kOnlyTheFile);
}

TEST(ReplaceFile, ContentsAreOnTheDiskBeforeTheRename) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    EXPECT_EQ(ReplaceFile(directory.Path(L"a.json"), "new"), 0);
    EXPECT_EQ(calls.syncCount, 1U);
}

// Records the order in which data reach the disk.
class DirectorySyncCalls final : public ForwardingFileCalls {
  public:
    SystemErrorCode SyncDirectory(const std::wstring& path) override {
        directories.push_back(path);
        contentsThen = ReadFile(path + kPathSeparator + L"a.json");
        return result;
    }

    std::vector<std::wstring> directories;
    std::string contentsThen;
    SystemErrorCode result = 0;
};

TEST(ReplaceFile, NewNameIsBroughtToTheDiskAfterTheRename) {
    const TempDirectory directory;
    DirectorySyncCalls calls;
    EXPECT_EQ(ReplaceFile(directory.Path(L"a.json"), "new"), 0);
    EXPECT_EQ(calls.directories, std::vector<std::wstring>{directory.Path()});
    EXPECT_EQ(calls.contentsThen, "new");
}

TEST(ReplaceFile, FailureOfThatIsReported) {
    const TempDirectory directory;
    DirectorySyncCalls calls;
    calls.result = SystemErrorFor(SystemErrorKind::kNoSpace);
    EXPECT_EQ(ReplaceFile(directory.Path(L"a.json"), "new"), calls.result);
    EXPECT_EQ(ReadFile(directory.Path(L"a.json")), "new");
}

class ReplaceFileFault : public testing::Test {
  protected:
    ReplaceFileFault() { WriteFile(directory_.Path(L"a.json"), "old"); }

    // Replacing fails with the system's reason and changes nothing.
    void ExpectUntouched() {
        EXPECT_EQ(ReplaceFile(directory_.Path(L"a.json"), "new contents"), kNoSpace);
        EXPECT_EQ(calls_.openCount, 0U);
        EXPECT_EQ(ReadFile(directory_.Path(L"a.json")), "old");
        EXPECT_EQ(NamesIn(directory_.Path()), kOnlyTheFile);
    }

    const SystemErrorCode kNoSpace = SystemErrorFor(SystemErrorKind::kNoSpace);
    TempDirectory directory_;
    FaultyFileCalls calls_;
};

TEST_F(ReplaceFileFault, FailedCreationLeavesTheOldFile) {
    calls_.createError = kNoSpace;
    ExpectUntouched();
}

TEST_F(ReplaceFileFault, FailedWriteLeavesTheOldFile) {
    calls_.mostBytesPerCall = 3;
    calls_.writeError = kNoSpace;
    calls_.writeFails = [](std::uint64_t offset) { return offset != 0; };
    ExpectUntouched();
}

TEST_F(ReplaceFileFault, FailedSyncLeavesTheOldFile) {
    calls_.syncError = kNoSpace;
    ExpectUntouched();
}

TEST_F(ReplaceFileFault, FailedCloseLeavesTheOldFile) {
    calls_.closeError = kNoSpace;
    ExpectUntouched();
}

TEST(ReplaceFile, DirectoryOfTheNameStays) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"a.json"));
    EXPECT_NE(ReplaceFile(directory.Path(L"a.json"), "new"), 0);
    EXPECT_EQ(QueryPath(directory.Path(L"a.json")), PathKind::kDirectory);
    EXPECT_EQ(NamesIn(directory.Path()), kOnlyTheFile);
}

TEST(ReplaceFile, AnotherTemporaryNameIsChosenIfOneIsTaken) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    std::wstring taken;
    calls.beforeCreate = [&](const std::wstring& path) {
        if (!taken.empty()) return;
        taken = path;
        WriteFile(path, "another program's");
    };
    EXPECT_EQ(ReplaceFile(directory.Path(L"a.json"), "new"), 0);
    EXPECT_EQ(ReadFile(directory.Path(L"a.json")), "new");
    EXPECT_EQ(ReadFile(taken), "another program's");
}

TEST(ReplaceFile, TryingLeavesNothing) {
    const TempDirectory directory;
    EXPECT_EQ(TryReplaceFile(directory.Path(L"a.json")), 0);
    EXPECT_EQ(NamesIn(directory.Path()), std::set<std::string>());
    EXPECT_EQ(ClassifySystemError(TryReplaceFile(directory.Path(L"none/a.json"))),
              SystemErrorKind::kNotFound);
}

}  // namespace
}  // namespace stalwick::test
