// SPDX-License-Identifier: BSD-3-Clause
#include "writers/output_naming.h"

#include <string>

#include <gtest/gtest.h>

#include "outputs/file_identity.h"
#include "platform/paths.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/temp_directory.h"
#include "writers/file_header.h"

namespace stalwick::test {
namespace {

std::string Unique(const TempDirectory& directory, const std::wstring& name,
                   const SuffixMaker& suffixMaker = nullptr) {
    const std::string path = MakeUniqueFileName(ToUtf8(directory.Path(name)), suffixMaker);
    return path.substr(ToUtf8(directory.Path()).size() + 1);
}

TEST(OutputNaming, FreeNameIsTheDirectoryASeparatorAndTheParts) {
    const TempDirectory directory;
    EXPECT_EQ(BuildOutputFilePath(directory.Path(), L"CSC", L"7", L".vcs"),
              directory.Path() + kPathSeparator + L"CSC7.vcs");
    // The directory's text is used as given.
    EXPECT_EQ(BuildOutputFilePath(L"a//b/", L"Events", L"", L".vev"),
              std::wstring(L"a//b/") + kPathSeparator + L"Events.vev");
}

TEST(OutputNaming, TakenNamesGetTheNextFreeNumber) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"CSC1.vcs"), "first");
    EXPECT_EQ(BuildOutputFilePath(directory.Path(), L"CSC", L"1", L".vcs"),
              directory.Path(L"CSC1_01.vcs"));
    WriteFile(directory.Path(L"CSC1_01.vcs"), "second");
    EXPECT_EQ(BuildOutputFilePath(directory.Path(), L"CSC", L"1", L".vcs"),
              directory.Path(L"CSC1_02.vcs"));
    EXPECT_EQ(ReadFile(directory.Path(L"CSC1.vcs")), "first");
    EXPECT_EQ(ReadFile(directory.Path(L"CSC1_01.vcs")), "second");
}

TEST(OutputNaming, GapInTheNumbersIsFilled) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a.b"), "");
    WriteFile(directory.Path(L"a_02.b"), "");
    EXPECT_EQ(Unique(directory, L"a.b"), "a_01.b");
}

TEST(OutputNaming, NumbersAreTwoDigitsWideAndThenGrow) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a.b"), "");
    for (int number = 1; number < 100; ++number) {
        std::wstring name = number < 10 ? L"a_0" : L"a_";
        WriteFile(directory.Path(name.append(std::to_wstring(number)).append(L".b")), "");
    }
    EXPECT_EQ(Unique(directory, L"a.b"), "a_100.b");
}

TEST(OutputNaming, DirectoryOfTheWantedNameDoesNotCountAsTaken) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"CSC1.vcs"));
    EXPECT_EQ(BuildOutputFilePath(directory.Path(), L"CSC", L"1", L".vcs"),
              directory.Path(L"CSC1.vcs"));
    WriteFile(directory.Path(L"a.b"), "");
    MakeDirectory(directory.Path(L"a_01.b"));
    EXPECT_EQ(Unique(directory, L"a.b"), "a_01.b");
}

TEST(OutputNaming, LastPointOfTheWholePathCounts) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"d.x"));
    const std::wstring inside = std::wstring(L"d.x") + kPathSeparator + L"plain";
    WriteFile(directory.Path(inside), "");
    const std::string separator = ToUtf8(std::wstring(1, kPathSeparator));
    EXPECT_EQ(Unique(directory, inside), "d_01.x" + separator + "plain");
    WriteFile(directory.Path(L"two.points.txt"), "");
    EXPECT_EQ(Unique(directory, L"two.points.txt"), "two.points_01.txt");
}

TEST(OutputNaming, EmptyPathStaysEmpty) {
    EXPECT_EQ(MakeUniqueFileName(""), "");
}

TEST(OutputNaming, FreePathIsReturnedUnchanged) {
    const TempDirectory directory;
    EXPECT_EQ(Unique(directory, L"free.txt"), "free.txt");
}

TEST(OutputNaming, SuffixMakerReplacesTheNumber) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a.b"), "");
    WriteFile(directory.Path(L"a-x1.b"), "");
    EXPECT_EQ(Unique(directory, L"a.b",
                     [](std::int32_t number) { return L"-x" + std::to_wstring(number); }),
              "a-x2.b");
}

TEST(OutputNaming, NumberedNamesKeepEveryCharacter) {
    const TempDirectory directory;
    const std::wstring deep = directory.Path(L"r\u00E9c \u65E5");
    MakeDirectory(deep);
    WriteFile(deep + kPathSeparator + L"CSC1.vcs", "");
    EXPECT_EQ(BuildOutputFilePath(deep, L"CSC", L"1", L".vcs"),
              deep + kPathSeparator + L"CSC1_01.vcs");
}

TEST(OutputNaming, CreationIsRepeatedWhileTheNameIsTakenInBetween) {
    const TempDirectory directory;
    int attempts = 0;
    std::wstring path;
    const std::int32_t result =
        CreateUnderFreeName([&] { return BuildOutputFilePath(directory.Path(), L"a", L"", L".b"); },
                            [&](const std::wstring& candidate) {
                                if (++attempts < 3) {
                                    WriteFile(candidate, "of another program");
                                    return kNameTaken;
                                }
                                return std::int32_t{0};
                            },
                            path);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(path, directory.Path(L"a_02.b"));
}

// A full quota may leave the entry of a file that could not be created.
TEST(OutputNaming, FailedCreationThatLeftAFileIsNotRepeated) {
    const TempDirectory directory;
    int attempts = 0;
    std::wstring path;
    EXPECT_EQ(CreateUnderFreeName([&] { return directory.Path(L"a.b"); },
                                  [&](const std::wstring& candidate) {
                                      ++attempts;
                                      WriteFile(candidate, "");
                                      return CreationResult(
                                          SystemErrorFor(SystemErrorKind::kNoSpace), candidate);
                                  },
                                  path),
              -1);
    EXPECT_EQ(attempts, 1);
}

TEST(OutputNaming, CreationThatFailsOtherwiseIsNotRepeated) {
    const TempDirectory directory;
    int attempts = 0;
    std::wstring path;
    EXPECT_EQ(CreateUnderFreeName([&] { return directory.Path(L"a.b"); },
                                  [&](const std::wstring&) { return ++attempts, -7; }, path),
              -7);
    EXPECT_EQ(attempts, 1);
}

// A record as filled by InitOutputFileRecord.
OutputFileRecord InitializedRecord() {
    FileWriterContainer container{OutputSettings()};
    container.timestampOffset = 99;
    container.phaseModulus = 4;
    OutputFileRecord record;
    InitOutputFileRecord(container, record, {5, L"dir/CSC3.vcs", L"CSC3", 2, 30000.0});
    return record;
}

TEST(OutputNaming, RecordIsFilledFromTheFileAndTheContainer) {
    const FixedIdentity identity;
    const OutputFileRecord record = InitializedRecord();
    EXPECT_EQ(record.handle, 5);
    EXPECT_EQ(record.filePath, L"dir/CSC3.vcs");
    EXPECT_EQ(record.timeCreated, L"2021/03/04 09:05:07");
    EXPECT_EQ(record.acqEntName, L"CSC3");
    EXPECT_EQ(record.channelIndex, 2U);
    EXPECT_EQ(record.samplingFrequency, 30000.0);
    EXPECT_EQ(record.interpolationFrequency, 30000.0);
    EXPECT_EQ(record.timestampOffset, 99U);
    EXPECT_EQ(record.phaseModulus, 4U);
    EXPECT_EQ(record.lastBaseTimestamp, 0U);
    EXPECT_EQ(record.bufferedCount, 0U);
}

TEST(OutputNaming, UuidIsTheGeneratorsFirstTwoNumbersInLittleEndianOrder) {
    const FixedIdentity identity;
    EXPECT_EQ(ToUtf8(FormatUuid(InitializedRecord().fileUuid)), kFixedUuidText);
}

TEST(OutputNaming, EveryUuidIsOfVersionFourAndVariantOne) {
    for (int i = 0; i < 200; ++i) {
        const std::wstring text = FormatUuid(InitializedRecord().fileUuid);
        ASSERT_EQ(text.size(), 36U);
        EXPECT_EQ(text[14], L'4');
        EXPECT_NE(std::wstring(L"89ab").find(text[19]), std::wstring::npos);
    }
}

TEST(OutputNaming, FilesOfTheSameSecondHaveOneTimeAndDifferentUuids) {
    const LocalTimeSource before =
        SetLocalTimeSource([] { return LocalTime{2021, 3, 4, 9, 5, 7}; });
    const OutputFileRecord first = InitializedRecord();
    const OutputFileRecord second = InitializedRecord();
    SetLocalTimeSource(before);
    EXPECT_EQ(first.timeCreated, L"2021/03/04 09:05:07");
    EXPECT_EQ(second.timeCreated, first.timeCreated);
    EXPECT_NE(first.fileUuid, second.fileUuid);
}

TEST(OutputNaming, LocalTimeIsPaddedWithZeros) {
    const FixedIdentity identity;
    EXPECT_EQ(FormatLocalTime(), L"2021/03/04 09:05:07");
    const LocalTimeSource before =
        SetLocalTimeSource([] { return LocalTime{987, 12, 31, 23, 59, 58}; });
    EXPECT_EQ(FormatLocalTime(), L"0987/12/31 23:59:58");
    SetLocalTimeSource(before);
}

}  // namespace
}  // namespace stalwick::test
