// SPDX-License-Identifier: BSD-3-Clause
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "platform/file_calls.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/system_error.h"
#include "platform/windows/windows_api.h"

namespace stalwick {
namespace {

namespace fs = std::filesystem;

// Removes a tree whose paths may be too long for the standard library. `path` has the prefix \\?\.
void RemoveTree(const std::wstring& path) {
    WIN32_FIND_DATAW entry{};
    const HANDLE search = ::FindFirstFileW((path + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::wstring name = entry.cFileName;
        const std::wstring child = path + L"\\" + name;
        if (name == L"." || name == L"..") continue;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            RemoveTree(child);
        } else {
            ::DeleteFileW(child.c_str());
        }
    } while (::FindNextFileW(search, &entry) != FALSE);
    ::FindClose(search);
    ::RemoveDirectoryW(path.c_str());
}

// A temporary directory, removed at the end. Only wide names: the narrow ones depend on the
// machine's code page.
class WindowsPathsTest : public testing::Test {
  protected:
    WindowsPathsTest() {
        RemoveTree(L"\\\\?\\" + root_.wstring());
        fs::create_directory(root_);
    }
    ~WindowsPathsTest() override { RemoveTree(L"\\\\?\\" + root_.wstring()); }

    std::wstring Below(const std::wstring& name) const { return root_.wstring() + L"\\" + name; }

    // Two levels deep, 300 characters in total.
    std::wstring LongDirectory() const {
        const std::wstring first = Below(std::wstring(120, L'a'));
        EXPECT_EQ(CreateDirectoryLevel(first), 0);
        const std::wstring second = first + L"\\" + std::wstring(299 - first.size(), L'b');
        EXPECT_EQ(CreateDirectoryLevel(second), 0);
        EXPECT_EQ(second.size(), 300U);
        return second;
    }

  private:
    fs::path root_ = fs::temp_directory_path() / L"stalwick windows paths";
};

SystemErrorCode CreateAndClose(const std::wstring& path) {
    FileHandle handle = kNoFile;
    const SystemErrorCode code = SystemFileCalls().CreateExclusive(path, handle);
    return code != 0 ? code : SystemFileCalls().Close(handle);
}

TEST(WindowsSplitPathTest, DriveDirectoryNameAndExtensionArePartedBySlashesOfBothKinds) {
    const PathParts parts = SplitPath(L"C:\\rec\\day 1/run.2.ord");
    EXPECT_EQ(parts.drive, L"C:");
    EXPECT_EQ(parts.directory, L"\\rec\\day 1/");
    EXPECT_EQ(parts.name, L"run.2");
    EXPECT_EQ(parts.extension, L".ord");
}

TEST(WindowsSplitPathTest, DriveWithoutDirectoryKeepsTheNameWhole) {
    const PathParts parts = SplitPath(L"D:run.ord");
    EXPECT_EQ(parts.drive, L"D:");
    EXPECT_EQ(parts.directory, L"");
    EXPECT_EQ(parts.name, L"run");
}

TEST(WindowsSplitPathTest, SharePathHasNoDrive) {
    const PathParts parts = SplitPath(L"\\\\server\\share\\run.ord");
    EXPECT_EQ(parts.drive, L"");
    EXPECT_EQ(parts.directory, L"\\\\server\\share\\");
    EXPECT_EQ(parts.name, L"run");
}

TEST_F(WindowsPathsTest, NamesBeyondTheCodePageAreCreatedAndFound) {
    const std::wstring path = Below(L"\u0416\u65E5\U0001F9E0.ord");
    EXPECT_EQ(QueryPath(path), PathKind::kMissing);
    EXPECT_EQ(CreateAndClose(path), 0);
    EXPECT_EQ(QueryPath(path), PathKind::kFile);
}

TEST_F(WindowsPathsTest, CreationNeverOpensWhatExists) {
    const std::wstring path = Below(L"taken.vcs");
    { std::ofstream(fs::path(path)) << "kept"; }
    EXPECT_EQ(ClassifySystemError(CreateAndClose(path)), SystemErrorKind::kAlreadyExists);
    EXPECT_EQ(fs::file_size(path), 4U);
}

TEST_F(WindowsPathsTest, DirectoryIsCreatedOneLevelAtATime) {
    EXPECT_EQ(ClassifySystemError(CreateDirectoryLevel(Below(L"missing\\child"))),
              SystemErrorKind::kNotFound);
    EXPECT_EQ(CreateDirectoryLevel(Below(L"child")), 0);
    EXPECT_EQ(QueryPath(Below(L"child")), PathKind::kDirectory);
    EXPECT_EQ(ClassifySystemError(CreateDirectoryLevel(Below(L"child"))),
              SystemErrorKind::kAlreadyExists);
}

TEST_F(WindowsPathsTest, DirectoryIsNotReadAsAFile) {
    FileHandle handle = kNoFile;
    EXPECT_NE(SystemFileCalls().OpenForReading(Below(L"."), handle), 0);
    EXPECT_EQ(handle, kNoFile);
}

TEST_F(WindowsPathsTest, PathsOfThreeHundredCharactersWork) {
    const std::wstring path = LongDirectory() + L"\\CSC1.vcs";
    EXPECT_EQ(QueryPath(path), PathKind::kMissing);
    EXPECT_EQ(CreateAndClose(path), 0);
    EXPECT_EQ(QueryPath(path), PathKind::kFile);
    EXPECT_EQ(ClassifySystemError(CreateAndClose(path)), SystemErrorKind::kAlreadyExists);
}

TEST_F(WindowsPathsTest, LongPathMayContainForwardSlashesAndDots) {
    const std::wstring directory = LongDirectory();
    EXPECT_EQ(QueryPath(directory + L"/./../"), PathKind::kDirectory);
    EXPECT_EQ(CreateAndClose(directory + L"/CSC2.vcs"), 0);
    EXPECT_EQ(QueryPath(directory + L"\\CSC2.vcs"), PathKind::kFile);
}

TEST(WindowsAbsolutePathTest, PathWithoutADriveIsTakenFromTheCurrentOne) {
    const std::wstring drive = fs::current_path().root_name().wstring();
    EXPECT_EQ(AbsolutePath(L"\\rec/a.ord"), drive + L"\\rec\\a.ord");
    EXPECT_EQ(AbsolutePath(drive + L"a.ord"), AbsolutePath(L"a.ord"));
}

TEST_F(WindowsPathsTest, WritesLandAtTheirOffsets) {
    const std::wstring path = Below(L"offsets.vrd");
    FileHandle handle = kNoFile;
    ASSERT_EQ(SystemFileCalls().CreateExclusive(path, handle), 0);
    std::size_t count = 0;
    EXPECT_EQ(SystemFileCalls().WriteAt(handle, 4, "data", 4, count), 0);
    EXPECT_EQ(SystemFileCalls().WriteAt(handle, 0, "head", 4, count), 0);
    EXPECT_EQ(SystemFileCalls().SyncData(handle), 0);
    EXPECT_EQ(SystemFileCalls().Close(handle), 0);
    std::string content;
    std::ifstream(fs::path(path)) >> content;
    EXPECT_EQ(content, "headdata");
}

TEST(WindowsSystemErrorTest, EveryKindIsRecognisedAgain) {
    for (const auto kind :
         {SystemErrorKind::kNone, SystemErrorKind::kInterrupted, SystemErrorKind::kAlreadyExists,
          SystemErrorKind::kNoSpace, SystemErrorKind::kTooManyOpenFiles,
          SystemErrorKind::kAccessDenied, SystemErrorKind::kNotFound,
          SystemErrorKind::kFileTooLarge, SystemErrorKind::kNameTooLong, SystemErrorKind::kOther}) {
        EXPECT_EQ(ClassifySystemError(SystemErrorFor(kind)), kind);
    }
}

TEST(WindowsSystemErrorTest, TextIsOneLineWithoutAFullStop) {
    const std::wstring text = SystemErrorText(SystemErrorFor(SystemErrorKind::kNoSpace));
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.find_first_of(L"\r\n"), std::wstring::npos);
    EXPECT_NE(text.back(), L'.');
}

}  // namespace
}  // namespace stalwick
