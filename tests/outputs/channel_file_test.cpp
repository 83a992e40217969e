// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/channel_file.h"

#include <vector>

#include <gtest/gtest.h>

#include "tests/outputs/reference_outputs.h"
#include "tests/support/memory_file_calls.h"

namespace stalwick::test {
namespace {

using VtxDataTypes::CRRec;

constexpr wchar_t kPath[] = L"out/rec/CSC3.vcs";

TEST(ChannelFile, ReturnsTheFieldsOfItsHeader) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(100);
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    EXPECT_EQ(file.Path(), kPath);
    EXPECT_EQ(file.Header().Value(L"-SessionUUID"), L"0b5e3b8e-6d2c-4c7e-9a51-3f0c8d5b7a10");
    EXPECT_EQ(file.Header().Value(L"-AcqEntName"), L"CSC3");
    EXPECT_EQ(file.Header().Value(L"-OriginalFileName"), L"\"/data/out/rec/CSC3\"");
    EXPECT_EQ(file.Header().Number(L"-ADChannel"), 2U);
    EXPECT_EQ(file.Header().Number(L"-SamplingFrequency"), 30000U);
    EXPECT_TRUE(file.IsClosed());
}

TEST(ChannelFile, WithoutAClosingTimeIsNotClosed) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(1, false);
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    EXPECT_FALSE(file.IsClosed());
}

TEST(ChannelFile, ReturnsRecordsByPosition) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(256);  // 2,560 samples: five full records
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    ASSERT_EQ(file.RecordCount(), 5U);
    EXPECT_EQ(file.CutBytes(), 0U);
    std::vector<CRRec> records(2);
    ASSERT_FALSE(file.ReadRecords(3, records));
    EXPECT_EQ(records[0].samples.front(), 3 * 512);
    EXPECT_EQ(records[1].samples.back(), 5 * 512 - 1);
    EXPECT_EQ(records[1].numValidSamples, 512U);
    EXPECT_EQ(records[1].channelNumber, 2U);
    EXPECT_EQ(records[1].sampleFrequency, 30000U);
    ASSERT_FALSE(file.ReadRecords(0, records));
    EXPECT_EQ(records[0].timestamp, 1'000'000U);
    EXPECT_EQ(records[1].samples.front(), 512);
}

TEST(ChannelFile, LastRecordMayHaveFewerSamples) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(52);
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    ASSERT_EQ(file.RecordCount(), 2U);
    CRRec last{};
    ASSERT_FALSE(file.ReadRecords(1, {&last, 1}));
    EXPECT_EQ(last.numValidSamples, 8U);
    EXPECT_EQ(last.samples[7], 519);
    EXPECT_EQ(last.samples[8], 0);
}

TEST(ChannelFile, WithoutRecordsIsWhole) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(0);
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    EXPECT_EQ(file.RecordCount(), 0U);
    ASSERT_FALSE(file.ReadRecords(0, {}));
}

TEST(ChannelFile, ReadsThatGiveLittleAreContinued) {
    MemoryFileCalls disk;
    disk.mostBytesPerRead = 7;
    disk.files[kPath] = ReferenceChannelBytes(256);
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    CRRec last{};
    ASSERT_FALSE(file.ReadRecords(4, {&last, 1}));
    EXPECT_EQ(last.samples.back(), 5 * 512 - 1);
}

TEST(ChannelFile, MovedKeepsItsRecordsAndIsClosedOnce) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(256);
    {
        std::vector<ChannelFile> files(1);
        ASSERT_FALSE(files.front().Open(kPath));
        files.resize(100);
        CRRec first{};
        ASSERT_FALSE(files.front().ReadRecords(0, {&first, 1}));
        EXPECT_EQ(first.samples[9], 9);
        EXPECT_EQ(disk.openCount, 1U);
    }
    EXPECT_EQ(disk.openCount, 0U);
}

TEST(ChannelFile, OpensAnotherFileAfterTheFirst) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(256);
    disk.files[L"other.vcs"] = ReferenceChannelBytes(1);
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    ASSERT_FALSE(file.Open(L"other.vcs"));
    EXPECT_EQ(file.RecordCount(), 1U);
    EXPECT_EQ(disk.openCount, 1U);
}

TEST(ChannelFile, RecordThatIsNotThereIsAnError) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(256);
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    std::vector<CRRec> records(2);
    const RecordFileError error = file.ReadRecords(4, records);
    EXPECT_EQ(error.kind, RecordFileError::Kind::kUnreadable);
    EXPECT_EQ(error.text, L"out/rec/CSC3.vcs: it has no record 5, only 5");
    EXPECT_TRUE(file.ReadRecords(UINT64_MAX, records));
}

}  // namespace
}  // namespace stalwick::test
