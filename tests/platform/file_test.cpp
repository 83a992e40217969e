// SPDX-License-Identifier: BSD-3-Clause

// Files and directories, with calls that do little at a time or fail.

#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/file_system.h"
#include "platform/input_file.h"
#include "platform/output_file.h"
#include "platform/paths.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

std::string Text(std::size_t size) {
    std::string text;
    while (text.size() < size) text += "0123456789abcdef-";
    return text.substr(0, size);
}

TEST(ListDirectory, ReturnsTheNamesOfEverythingInOrder) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"out"));
    const std::wstring out = directory.Path(L"out");
    std::vector<std::wstring> names = {L"left over"};
    EXPECT_EQ(ListDirectory(out, names), 0);
    EXPECT_TRUE(names.empty());
    for (const wchar_t* name : {L"b.vcs", L"\u00b5.vev", L"a"}) {
        WriteFile(out + kPathSeparator + name, "x");
    }
    MakeDirectory(out + kPathSeparator + L"c");
    EXPECT_EQ(ListDirectory(out, names), 0);
    EXPECT_EQ(names, (std::vector<std::wstring>{L"a", L"b.vcs", L"c", L"\u00b5.vev"}));

    const SystemErrorCode missing = ListDirectory(directory.Path(L"none"), names);
    EXPECT_EQ(ClassifySystemError(missing), SystemErrorKind::kNotFound);
    EXPECT_TRUE(names.empty());
    EXPECT_NE(ListDirectory(out + kPathSeparator + L"a", names), 0);
}

TEST(OutputFile, ShortAndInterruptedWritesAreContinued) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.mostBytesPerCall = 3;
    calls.interruptionsPerCall = 2;
    OutputFile file;
    ASSERT_EQ(file.CreateExclusive(directory.Path(L"a")), 0);
    EXPECT_EQ(file.WriteAt(0, Text(100).data(), 100), 0);
    EXPECT_EQ(file.WriteAt(10, "XY", 2), 0);
    EXPECT_EQ(file.SyncData(), 0);
    EXPECT_EQ(file.Close(), 0);
    std::string expected = Text(100);
    expected.replace(10, 2, "XY");
    EXPECT_EQ(ReadFile(directory.Path(L"a")), expected);
}

TEST(OutputFile, LargeWritesArriveWhole) {
    const TempDirectory directory;
    const std::string text = Text(5'000'001);
    OutputFile file;
    ASSERT_EQ(file.CreateExclusive(directory.Path(L"a")), 0);
    EXPECT_EQ(file.WriteAt(0, text.data(), text.size()), 0);
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(ReadFile(directory.Path(L"a")), text);
}

TEST(OutputFile, WriteThatTakesNothingIsAnErrorAndNoLoop) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    OutputFile file;
    ASSERT_EQ(file.CreateExclusive(directory.Path(L"a")), 0);
    calls.mostBytesPerCall = 0;
    EXPECT_NE(file.WriteAt(0, "abc", 3), 0);
}

TEST(OutputFile, DiskThatFillsUpKeepsWhatWentIn) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.bytesUntilFull = 5;
    OutputFile file;
    ASSERT_EQ(file.CreateExclusive(directory.Path(L"a")), 0);
    EXPECT_EQ(file.WriteAt(16384, "0123456789", 10), SystemErrorFor(SystemErrorKind::kNoSpace));
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(ReadFile(directory.Path(L"a")).substr(16384), "01234");
}

TEST(OutputFile, ExistingNamesAreRefusedAndStay) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"file"), "precious");
    MakeDirectory(directory.Path(L"dir"));
    for (const wchar_t* name : {L"file", L"dir"}) {
        OutputFile file;
        EXPECT_NE(file.CreateExclusive(directory.Path(name)), 0);
        EXPECT_FALSE(file.IsOpen());
    }
    EXPECT_EQ(ReadFile(directory.Path(L"file")), "precious");
}

TEST(OutputFile, MovedFileIsClosedOnce) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    {
        OutputFile file;
        ASSERT_EQ(file.CreateExclusive(directory.Path(L"a")), 0);
        OutputFile other(std::move(file));
        OutputFile third;
        third = std::move(other);
        EXPECT_TRUE(third.IsOpen());
        EXPECT_EQ(calls.openCount, 1U);
    }
    EXPECT_EQ(calls.openCount, 0U);
}

TEST(InputFile, ReadsAreContinuedUntilAllIsThere) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a"), Text(1000));
    FaultyFileCalls calls;
    calls.mostBytesPerCall = 7;
    calls.interruptionsPerCall = 1;
    InputFile file;
    ASSERT_EQ(file.Open(directory.Path(L"a")), 0);
    EXPECT_EQ(file.Size(), 1000U);
    std::string bytes(2000, '\0');
    std::size_t count = 0;
    EXPECT_EQ(file.Read(bytes.data(), 600, count), 0);
    EXPECT_EQ(count, 600U);
    EXPECT_EQ(file.Read(bytes.data() + 600, 1000, count), 0);
    EXPECT_EQ(count, 400U);
    EXPECT_EQ(bytes.substr(0, 1000), Text(1000));
    EXPECT_EQ(file.Read(bytes.data(), 10, count), 0);
    EXPECT_EQ(count, 0U);
}

TEST(InputFile, FailedReadIsItsError) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a"), Text(1000));
    FaultyFileCalls calls;
    calls.readError = 5;
    InputFile file;
    ASSERT_EQ(file.Open(directory.Path(L"a")), 0);
    char byte = 0;
    std::size_t count = 0;
    EXPECT_EQ(file.Read(&byte, 1, count), 5);
}

TEST(InputFile, ReadsAtAnyPlace) {
    const TempDirectory directory;
    const std::string text = Text(1000);
    WriteFile(directory.Path(L"a"), text);
    InputFile file;
    ASSERT_EQ(file.Open(directory.Path(L"a")), 0);
    std::string bytes(100, ' ');
    std::size_t count = 0;
    for (const std::size_t offset : {900U, 0U, 450U, 0U}) {
        ASSERT_EQ(file.ReadAt(offset, bytes.data(), bytes.size(), count), 0);
        EXPECT_EQ(count, 100U);
        EXPECT_EQ(bytes, text.substr(offset, 100));
    }
}

TEST(InputFile, ReadAcrossOrAfterTheEndReturnsWhatExists) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a"), Text(100));
    InputFile file;
    ASSERT_EQ(file.Open(directory.Path(L"a")), 0);
    std::string bytes(100, ' ');
    std::size_t count = 0;
    EXPECT_EQ(file.ReadAt(60, bytes.data(), 100, count), 0);
    EXPECT_EQ(count, 40U);
    EXPECT_EQ(file.ReadAt(100, bytes.data(), 100, count), 0);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(file.ReadAt(5'000'000'000U, bytes.data(), 100, count), 0);
    EXPECT_EQ(count, 0U);
}

TEST(InputFile, MovedFileIsClosedOnce) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a"), Text(100));
    WriteFile(directory.Path(L"b"), "b");
    FaultyFileCalls calls;
    InputFile file;
    ASSERT_EQ(file.Open(directory.Path(L"a")), 0);
    InputFile other(std::move(file));
    EXPECT_TRUE(other.IsOpen());
    EXPECT_EQ(calls.openCount, 1U);
    InputFile third;
    ASSERT_EQ(third.Open(directory.Path(L"b")), 0);
    third = std::move(other);
    EXPECT_EQ(third.Size(), 100U);
    EXPECT_EQ(calls.openCount, 1U);
    EXPECT_EQ(third.Close(), 0);
    EXPECT_EQ(calls.openCount, 0U);
}

TEST(InputFile, DirectoriesAndMissingFilesCannotBeOpened) {
    const TempDirectory directory;
    InputFile file;
    EXPECT_NE(file.Open(directory.Path()), 0);
    EXPECT_NE(file.Open(directory.Path(L"none")), 0);
    EXPECT_FALSE(file.IsOpen());
}

TEST(InputFile, OpenFileRefusesASecondOne) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a"), "a");
    WriteFile(directory.Path(L"b"), "b");
    InputFile file;
    ASSERT_EQ(file.Open(directory.Path(L"a")), 0);
    EXPECT_NE(file.Open(directory.Path(L"b")), 0);
    char byte = 0;
    std::size_t count = 0;
    EXPECT_EQ(file.Read(&byte, 1, count), 0);
    EXPECT_EQ(byte, 'a');
}

TEST(FileSystem, PathsAreMissingFilesOrDirectories) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"f"), "");
    EXPECT_EQ(QueryPath(directory.Path()), PathKind::kDirectory);
    EXPECT_EQ(QueryPath(directory.Path(L"f")), PathKind::kFile);
    EXPECT_EQ(QueryPath(directory.Path(L"none")), PathKind::kMissing);
    EXPECT_EQ(QueryPath(L""), PathKind::kMissing);
}

TEST(FileSystem, LinkToADirectoryIsOneAndAnyOtherLinkIsAFile) {
    if (kPathSeparator != L'/') GTEST_SKIP() << "makes POSIX links";
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"d"));
    WriteFile(directory.Path(L"f"), "");
    const auto link = [&](const char* target, const wchar_t* name) {
        std::filesystem::create_symlink(target, ToUtf8(directory.Path(name)));
        return QueryPath(directory.Path(name));
    };
    EXPECT_EQ(link("d", L"to directory"), PathKind::kDirectory);
    EXPECT_EQ(link("to directory", L"twice"), PathKind::kDirectory);
    EXPECT_EQ(link("f", L"to file"), PathKind::kFile);
    EXPECT_EQ(link("none", L"dangling"), PathKind::kFile);
    EXPECT_EQ(link("itself", L"itself"), PathKind::kFile);
}

TEST(FileSystem, SizeOfAPathIsThatOfItsFileAndElseZero) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"file"), Text(70'001));
    WriteFile(directory.Path(L"empty"), "");
    EXPECT_EQ(QueryFileSize(directory.Path(L"file")), 70'001U);
    EXPECT_EQ(QueryFileSize(directory.Path(L"empty")), 0U);
    EXPECT_EQ(QueryFileSize(directory.Path()), 0U);
    EXPECT_EQ(QueryFileSize(directory.Path(L"missing")), 0U);
}

// Makes a directory the current one during its lifetime.
class InDirectory {
  public:
    explicit InDirectory(const std::wstring& path) { std::filesystem::current_path(ToUtf8(path)); }
    ~InDirectory() { std::filesystem::current_path(before_); }
    InDirectory(const InDirectory&) = delete;
    InDirectory& operator=(const InDirectory&) = delete;

  private:
    std::filesystem::path before_ = std::filesystem::current_path();
};

TEST(FileSystem, RelativePathIsTakenFromTheCurrentDirectory) {
    const TempDirectory directory;
    const InDirectory inside(directory.Path());
    EXPECT_EQ(AbsolutePath(L"a.ord"), directory.Path(L"a.ord"));
    EXPECT_EQ(AbsolutePath(directory.Path(L"a.ord")), directory.Path(L"a.ord"));
    EXPECT_EQ(AbsolutePath(L""), L"");
}

TEST(FileSystem, RelativePathAndCurrentDirectoryMayHaveAnyBytes) {
    if (kPathSeparator == L'\\') GTEST_SKIP() << "names are UTF-16";
    const TempDirectory directory;
    const std::wstring current = directory.Path(FromUtf8("t\xE9"));
    MakeDirectory(current);
    const InDirectory inside(current);
    EXPECT_EQ(AbsolutePath(FromUtf8("\xFF:a.ord")), current + L'/' + FromUtf8("\xFF:a.ord"));
    EXPECT_EQ(AbsolutePath(FromUtf8("/\xFF/../a.ord")), FromUtf8("/\xFF/../a.ord"));
}

TEST(FileSystem, PathStaysRelativeInADirectoryThatIsGone) {
    if (kPathSeparator == L'\\') GTEST_SKIP() << "a current directory cannot be removed";
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"gone"));
    const InDirectory inside(directory.Path(L"gone"));
    RemoveFile(directory.Path(L"gone"));
    EXPECT_EQ(AbsolutePath(L"a.ord"), L"a.ord");
}

TEST(FileSystem, PathsOfOnePlaceResolveToOne) {
    const TempDirectory directory;
    const InDirectory inside(directory.Path());
    MakeDirectory(directory.Path(L"d"));
    const std::wstring expected = ResolvedPath(directory.Path(L"d")) + kPathSeparator + L"x";
    for (const wchar_t* same : {L"d/x", L"./d/x", L"d/./x", L"d/../d//x"}) {
        EXPECT_EQ(ResolvedPath(AbsolutePath(same)), expected) << ToUtf8(same);
    }
    if (kPathSeparator == L'\\') return;  // links need a privilege there
    std::filesystem::create_symlink("d", "link");
    EXPECT_EQ(ResolvedPath(directory.Path(L"link/x")), expected);
}

TEST(FileSystem, FreeSpaceIsThatOfAnExistingDirectory) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"a"));
    const auto space = QueryFreeSpace(directory.Path(L"a"));
    ASSERT_TRUE(space);
    EXPECT_GT(space->bytes, 0U);
    EXPECT_EQ(space->fileSystem, QueryFreeSpace(directory.Path())->fileSystem);
    EXPECT_FALSE(QueryFreeSpace(directory.Path(L"missing")));
}

TEST(FileSystem, DirectoryIsMadeOneLevelDeep) {
    const TempDirectory directory;
    EXPECT_EQ(CreateDirectoryLevel(directory.Path(L"d")), 0);
    EXPECT_EQ(QueryPath(directory.Path(L"d")), PathKind::kDirectory);
    EXPECT_EQ(ClassifySystemError(CreateDirectoryLevel(directory.Path(L"d"))),
              SystemErrorKind::kAlreadyExists);
    EXPECT_EQ(ClassifySystemError(CreateDirectoryLevel(directory.Path(L"no") + L"/e")),
              SystemErrorKind::kNotFound);
}

TEST(SystemError, EveryKindHasItsOwnNumber) {
    for (const auto kind :
         {SystemErrorKind::kNone, SystemErrorKind::kInterrupted, SystemErrorKind::kAlreadyExists,
          SystemErrorKind::kNoSpace, SystemErrorKind::kTooManyOpenFiles,
          SystemErrorKind::kAccessDenied, SystemErrorKind::kNotFound,
          SystemErrorKind::kFileTooLarge, SystemErrorKind::kNameTooLong, SystemErrorKind::kOther}) {
        EXPECT_EQ(ClassifySystemError(SystemErrorFor(kind)), kind);
    }
    EXPECT_NE(SystemErrorText(SystemErrorFor(SystemErrorKind::kNoSpace)), L"");
}

TEST(OutputFile, TruncationKeepsTheBeginningAndIsContinuedAfterInterruptions) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.interruptionsPerCall = 2;
    OutputFile file;
    ASSERT_EQ(file.CreateExclusive(directory.Path(L"a")), 0);
    ASSERT_EQ(file.WriteAt(0, "abcdef", 6), 0);
    EXPECT_EQ(file.Truncate(4), 0);
    EXPECT_EQ(calls.truncateCount, 1U);
    EXPECT_EQ(ReadFile(directory.Path(L"a")), "abcd");
    calls.truncateError = SystemErrorFor(SystemErrorKind::kOther);
    EXPECT_EQ(file.Truncate(1), calls.truncateError);
    EXPECT_EQ(ReadFile(directory.Path(L"a")), "abcd");
}

}  // namespace
}  // namespace stalwick::test
