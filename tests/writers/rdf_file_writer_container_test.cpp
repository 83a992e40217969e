// SPDX-License-Identifier: BSD-3-Clause
#include "writers/rdf_file_writer_container.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kRecordWords = 32 + 18;

OutputSettings RecordsPerWrite(std::uint32_t count) {
    OutputSettings settings = QuickSettings();
    settings.recordsPerWrite = count;
    return settings;
}

// A raw data file of 32 channels at 30 kHz with an offset of 1000 µs.
struct OpenRawData {
    explicit OpenRawData(const OutputSettings& settings = QuickSettings()) : container(settings) {
        container.adChannelCount = 32;
        container.samplingFrequency = 30000;
        container.timestampOffset = 1000;
        EXPECT_EQ(container.Open(directory.Path()), 0);
    }

    void Write(const std::vector<std::uint16_t>& samples, const std::vector<std::uint8_t>& ttl,
               std::optional<std::uint64_t> timestamp) {
        EXPECT_EQ(container.WriteRawRecords(samples, 0, ttl, timestamp), 0);
    }
    std::size_t FileSize() const { return ReadFile(directory.Path(L"RawData.vrd")).size(); }
    // The words after the header of the finished file.
    std::vector<std::uint32_t> Words() {
        container.Finish();
        const std::string bytes = ReadFile(directory.Path(L"RawData.vrd")).substr(16384);
        std::vector<std::uint32_t> words;
        for (std::size_t at = 0; at < bytes.size(); at += 4) {
            std::uint32_t word = 0;
            for (std::size_t i = 4; i > 0; --i) {
                word = (word << 8U) | static_cast<unsigned char>(bytes[at + i - 1]);
            }
            words.push_back(word);
        }
        return words;
    }

    TempDirectory directory;
    RDFFileWriterContainer container;
};

std::vector<std::uint16_t> Samples(std::uint16_t value, std::size_t channels = 32) {
    return std::vector<std::uint16_t>(channels * 10, value);
}

TEST(RDFFileWriterContainer, HeaderFillsItsBlockAndRecordsFollow) {
    OpenRawData raw;
    EXPECT_EQ(raw.FileSize(), 16384U);
    raw.Write(Samples(0), {}, 1000);
    raw.container.Finish();
    EXPECT_EQ(raw.FileSize(), 16384U + 10 * kRecordWords * 4);
}

TEST(RDFFileWriterContainer, HeaderHasItsLinesAndARecordSizeOfZero) {
    const FixedIdentity identity;
    OpenRawData raw;
    raw.container.Finish();
    const std::string bytes = ReadFile(raw.directory.Path(L"RawData.vrd"));
    EXPECT_NE(bytes.find("-FileType Raw\r\n-FileVersion 3.4\r\n"), std::string::npos);
    EXPECT_NE(bytes.find("-TimeClosed 2021/03/04 09:05:07\r\n\r\n-RecordSize 0\r\n"),
              std::string::npos);
    EXPECT_NE(bytes.find("-AcqEntName RawData\r\n-SamplingFrequency 30000\r\n"
                         "-ADMaxValue 8388608\r\n-ADBitVolts 1.562500e-08\r\n"
                         "-NumADChannels 32\r\n"),
              std::string::npos);
}

TEST(RDFFileWriterContainer, HeaderOfAnyLengthFillsItsBlock) {
    for (const std::size_t length : {0U, 1U, 8000U, 15000U}) {
        const TempDirectory directory;
        RDFFileWriterContainer container(QuickSettings());
        container.adChannelCount = 1;
        container.samplingFrequency = 1;
        container.sessionUuid = std::wstring(length, L'x');
        EXPECT_EQ(container.Open(directory.Path()), 0);
        EXPECT_EQ(ReadFile(directory.Path(L"RawData.vrd")).size(), 16384U);
    }
}

TEST(RDFFileWriterContainer, HeaderTextThatFillsTheBlockToItsLastByteIsRefused) {
    const TempDirectory directory;
    {
        RDFFileWriterContainer empty(QuickSettings());
        empty.samplingFrequency = 1;
        ASSERT_EQ(empty.Open(directory.Path()), 0);
    }
    const std::size_t length =
        ReadFile(directory.Path(L"RawData.vrd")).find('\0');  // without a session text
    for (const std::size_t textSize : {16383U, 16384U}) {
        RemoveFile(directory.Path(L"RawData.vrd"));
        RDFFileWriterContainer container(QuickSettings());
        container.samplingFrequency = 1;
        container.sessionUuid = std::wstring(textSize - length, L'x');
        EXPECT_EQ(container.Open(directory.Path()), textSize == 16383 ? 0 : -1);
        EXPECT_EQ(container.File().failure.has_value(), textSize > 16383);
    }
}

TEST(RDFFileWriterContainer, RecordHasItsWordsInOrder) {
    OpenRawData raw;
    std::vector<std::uint16_t> samples = Samples(0);
    samples[0] = 0x7FFC;
    samples[10] = 0x8000;
    samples[20 + 1] = 4;
    raw.Write(samples, {0xA5}, 5'000'000'999);
    const std::vector<std::uint32_t> words = raw.Words();
    ASSERT_EQ(words.size(), 10 * kRecordWords);
    EXPECT_EQ(words[0], 2048U);
    EXPECT_EQ(words[1], 1U);
    EXPECT_EQ(words[2], 42U);
    EXPECT_EQ(words[3], 0U);
    EXPECT_EQ(words[4], 5'001'000U);
    EXPECT_EQ(words[5], 0U);
    EXPECT_EQ(words[6], 0xA5U);
    for (std::size_t i = 7; i < 17; ++i) EXPECT_EQ(words[i], 0U);
    EXPECT_EQ(words[17], 408270U);
    EXPECT_EQ(words[18], static_cast<std::uint32_t>(-408320));
    EXPECT_EQ(words[kRecordWords + 19], 49U);  // 4 x 12.46 of the second instant
    for (std::size_t record = 0; record < 10; ++record) {
        std::uint32_t checksum = 0;
        for (std::size_t i = 0; i + 1 < kRecordWords; ++i) {
            checksum ^= words[record * kRecordWords + i];
        }
        EXPECT_EQ(words[record * kRecordWords + kRecordWords - 1], checksum);
    }
}

TEST(RDFFileWriterContainer, TimestampStepIsTruncatedAtEverySample) {
    OpenRawData raw;
    raw.Write(Samples(0), {}, 1'000'000);
    raw.Write(Samples(0), {}, {});
    const std::vector<std::uint32_t> words = raw.Words();
    for (std::uint32_t record = 0; record < 20; ++record) {
        EXPECT_EQ(words[record * kRecordWords + 4], 2000U + 33 * record);
    }
}

TEST(RDFFileWriterContainer, TimestampHasItsUpperHalfFirst) {
    OpenRawData raw;
    raw.Write(Samples(0), {}, 0x0123'4567'89AB'CDEFU);
    const std::vector<std::uint32_t> words = raw.Words();
    const double nanoseconds = 81985529216486895.0;
    const auto microseconds = static_cast<std::uint64_t>(nanoseconds / 1000.0) + 1000;
    EXPECT_EQ(words[3], microseconds >> 32U);
    EXPECT_EQ(words[4], microseconds & 0xFFFFFFFFU);
}

TEST(RDFFileWriterContainer, RepeatedTimestampStartsFromItsTimeAgain) {
    OpenRawData raw;
    raw.Write(Samples(0), {}, 1'000'000);
    raw.Write(Samples(0), {}, 1'000'000);
    EXPECT_EQ(raw.Words()[10 * kRecordWords + 4], 2000U);
}

std::vector<std::uint32_t> TtlWords(const std::vector<std::uint8_t>& ttl) {
    OpenRawData raw;
    raw.Write(Samples(0), {0xFF}, 1000);  // none of it may remain in the next packet
    raw.Write(Samples(0), ttl, 1000);
    const std::vector<std::uint32_t> words = raw.Words();
    std::vector<std::uint32_t> values;
    for (std::size_t i = 10; i < 20; ++i) values.push_back(words[i * kRecordWords + 6]);
    return values;
}

TEST(RDFFileWriterContainer, EmptyTtlListGivesZeros) {
    EXPECT_EQ(TtlWords({}), std::vector<std::uint32_t>(10, 0));
}

TEST(RDFFileWriterContainer, SingleTtlValueIsRepeated) {
    EXPECT_EQ(TtlWords({7}), std::vector<std::uint32_t>(10, 7));
}

TEST(RDFFileWriterContainer, LastOfFewTtlValuesIsRepeated) {
    EXPECT_EQ(TtlWords({1, 2, 3, 4, 5}),
              (std::vector<std::uint32_t>{1, 2, 3, 4, 5, 5, 5, 5, 5, 5}));
}

TEST(RDFFileWriterContainer, RecordingThatFailsLeavesTheFullBlocks) {
    for (const std::uint32_t recordsPerWrite : {0U, 1U, 7U, 4999U, 6000U}) {
        for (const int packets : {499, 500, 501, 1007}) {
            OpenRawData raw(RecordsPerWrite(recordsPerWrite));
            const std::vector<std::uint16_t> samples = Samples(4);
            for (int packet = 0; packet < packets; ++packet) raw.Write(samples, {}, 1000);
            raw.container.LeaveUnfinished();
            const auto blocks = static_cast<std::size_t>(packets / 500);
            EXPECT_EQ(raw.FileSize(), 16384U + blocks * 5000 * kRecordWords * 4);
        }
    }
}

TEST(RDFFileWriterContainer, KillAtAnyTimeLeavesTheFullBlocks) {
    for (const std::uint32_t recordsPerWrite : {0U, 7U, 4999U, 6000U}) {
        OpenRawData raw(RecordsPerWrite(recordsPerWrite));
        const std::vector<std::uint16_t> samples = Samples(4);
        for (int packet = 0; packet < 1000; ++packet) raw.Write(samples, {}, 1000);
        EXPECT_EQ(raw.FileSize(), 16384U + 2 * 5000 * kRecordWords * 4);
    }
}

TEST(RDFFileWriterContainer, RecordingThatFailsKeepsEveryRecordIfTheSettingsSaySo) {
    OutputSettings settings = QuickSettings();
    settings.keepPartialBlocks = true;
    OpenRawData raw(settings);
    for (int packet = 0; packet < 501; ++packet) raw.Write(Samples(4), {}, 1000);
    raw.container.LeaveUnfinished();
    EXPECT_EQ(raw.FileSize(), 16384U + 5010 * kRecordWords * 4);
}

TEST(RDFFileWriterContainer, FileThatCannotBeShortenedIsNamed) {
    OpenRawData raw(RecordsPerWrite(1));
    raw.Write(Samples(4), {}, 1000);
    FaultyFileCalls calls;
    calls.truncateError = SystemErrorFor(SystemErrorKind::kOther);
    raw.container.LeaveUnfinished();
    EXPECT_EQ(raw.container.File().failure.value_or(OutputFailure()).action, L"shorten");
}

TEST(RDFFileWriterContainer, RecordsOfOtherLengthsAreFlushedInTime) {
    OpenRawData raw(RecordsPerWrite(20));
    for (int packet = 0; packet < 50; ++packet) {
        raw.Write(Samples(4, packet % 2 == 0 ? 64 : 32), {}, 1000);
        EXPECT_LE(raw.container.records[0].bufferedCount, 20 * kRecordWords);
    }
    EXPECT_EQ(raw.Words().size(), 250 * (64U + 18) + 250 * (32U + 18));
}

TEST(RDFFileWriterContainer, SizeWordIsTheHeadersChannelCountWhateverThePacket) {
    OpenRawData raw;
    raw.Write(Samples(4, 64), {}, 1000);
    const std::vector<std::uint32_t> words = raw.Words();
    EXPECT_EQ(words.size(), 10U * (64 + 18));
    EXPECT_EQ(words[2], 42U);
}

TEST(RDFFileWriterContainer, FlagHasNoEffect) {
    OpenRawData raw;
    EXPECT_EQ(raw.container.WriteRawRecords(Samples(4), 1, {3}, 1000), 0);
    EXPECT_EQ(raw.Words()[6], 3U);
}

TEST(RDFFileWriterContainer, FullDiskIsNoErrorOfTheRecordsAndKeptAsFailure) {
    OpenRawData raw(RecordsPerWrite(10));
    FaultyFileCalls calls;
    calls.bytesUntilFull = 0;
    for (int packet = 0; packet < 3; ++packet) raw.Write(Samples(4), {}, 1000);
    EXPECT_TRUE(raw.container.File().failure);
    raw.container.Finish();
    EXPECT_NE(ReadFile(raw.directory.Path(L"RawData.vrd")).find("File was not closed properly"),
              std::string::npos);
}

TEST(RDFFileWriterContainer, FileThatCannotBeCreatedFails) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"RawData.vrd"));
    RDFFileWriterContainer container(QuickSettings());
    EXPECT_EQ(container.Open(directory.Path()), -1);
    EXPECT_TRUE(container.File().failure);
}

}  // namespace
}  // namespace stalwick::test
