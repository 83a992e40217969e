// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/raw_data_file.h"

#include <vector>

#include <gtest/gtest.h>

#include "outputs/raw_record.h"
#include "tests/outputs/reference_outputs.h"
#include "tests/support/memory_file_calls.h"

namespace stalwick::test {
namespace {

constexpr wchar_t kPath[] = L"out/rec/RawData.vrd";

TEST(RawDataFile, ReturnsRecordsByPosition) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceRawBytes(32, 3);
    RawDataFile file;
    ASSERT_FALSE(file.Open(kPath));
    EXPECT_TRUE(file.IsClosed());
    EXPECT_EQ(file.ADChannelCount(), 32U);
    EXPECT_EQ(file.RecordWords(), 50U);
    ASSERT_EQ(file.RecordCount(), 30U);
    std::vector<std::uint32_t> words(100);
    ASSERT_FALSE(file.ReadRecords(21, words));
    const RawRecordView record(std::span<const std::uint32_t>(words).last(50));
    EXPECT_EQ(record.StartMarker(), 2048U);
    EXPECT_EQ(record.RecordId(), 1U);
    EXPECT_EQ(record.SizeWord(), 42U);
    EXPECT_EQ(record.Timestamp(), 999U + 2 * 33U);
    EXPECT_EQ(record.Status(), 0U);
    EXPECT_EQ(record.TtlValue(), 2U);
    EXPECT_EQ(record.SampleCount(), 32U);
    EXPECT_EQ(record.Sample(0), 99);      // 8 x 12.4609375, truncated
    EXPECT_EQ(record.Sample(31), 38728);  // 3108 x 12.4609375, truncated
    EXPECT_TRUE(record.ChecksumIsRight());
}

TEST(RawDataFile, WithoutADChannelsHasRecordsWithoutSamples) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceRawBytes(0, 1);
    RawDataFile file;
    ASSERT_FALSE(file.Open(kPath));
    EXPECT_EQ(file.RecordWords(), 18U);
    EXPECT_EQ(file.RecordCount(), 10U);
}

TEST(RawDataFile, WithoutAChannelCountIsRefused) {
    for (const char* value : {"", "many", "257", "-1", "32 "}) {
        MemoryFileCalls disk;
        std::string bytes = ReferenceRawBytes(32, 1);
        const std::string line = "-NumADChannels 32\r\n";
        const auto at = bytes.find(line);
        std::string text = bytes.substr(0, at) + "-NumADChannels " + value + "\r\n";

        text.resize(16384, '\0');
        disk.files[kPath] = text + bytes.substr(16384);
        RawDataFile file;
        const RecordFileError error = file.Open(kPath);
        EXPECT_EQ(error.kind, RecordFileError::Kind::kHeader) << value;
        EXPECT_NE(error.text.find(L"its -NumADChannels is \""), std::wstring::npos);
        EXPECT_EQ(disk.openCount, 0U);
    }
}

TEST(RawDataFile, WithRecordsOfAnotherLengthEndsInsideARecord) {
    MemoryFileCalls disk;
    std::string bytes = ReferenceRawBytes(64, 1);
    bytes.append(ReferenceRawBytes(32, 1).substr(16384));
    disk.files[kPath] = bytes;
    RawDataFile file;
    EXPECT_EQ(file.Open(kPath).kind, RecordFileError::Kind::kCutRecord);
}

}  // namespace
}  // namespace stalwick::test
