// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ord_file_reader.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

constexpr wchar_t kNotOpen[] = L"Error getting ORD data, a ORD file is not open.";

// A recording on the disk and a reader of it.
struct OpenRecording {
    explicit OpenRecording(const std::string& bytes, const std::wstring& name = L"rec.ord")
        : path(directory.Path(name)) {
        WriteFile(path, bytes);
        status = reader.Open(path);
    }

    TempDirectory directory;
    std::wstring path;
    ORDFileReader reader;
    std::int32_t status = 0;
    std::vector<ORDDataPacket> records;
    bool endOfFile = false;
};

std::wstring OpenErrorText(const std::wstring& path) {
    return L"Error opening file, the file path(" + path + L") may be invalid.";
}

TEST(ORDFileReader, StartsWithTheDefaults) {
    const ORDFileReader reader;
    EXPECT_EQ(reader.FileVersion(), L"1.0");
    EXPECT_EQ(reader.UTCOffsetMicroseconds(), 0);
    EXPECT_EQ(reader.NumADChannels(), 0U);
    EXPECT_EQ(reader.SamplingFrequency(), 0U);
    EXPECT_EQ(reader.ADMaxValue(), 0U);
    EXPECT_EQ(reader.ADBitVolts(), 0.0);
    EXPECT_EQ(reader.InputRange(), 0U);
    EXPECT_FALSE(reader.BaseIMUAvailable() || reader.AfeIMUAvailable() ||
                 reader.UltrasonicAvailable());
    EXPECT_EQ(reader.GetHeaderText(), L"");
    EXPECT_EQ(reader.GetErrorMessage(), L"");
}

TEST(ORDFileReader, MissingFileIsNamedExactlyAsGiven) {
    const TempDirectory directory;
    const std::wstring path = directory.Path(L"no//such.ord");
    ORDFileReader reader;
    EXPECT_EQ(reader.Open(path), -1);
    EXPECT_EQ(reader.GetErrorMessage(), OpenErrorText(path));
}

TEST(ORDFileReader, DirectoryCannotBeOpened) {
    const TempDirectory directory;
    ORDFileReader reader;
    EXPECT_EQ(reader.Open(directory.Path()), -1);
    EXPECT_EQ(reader.GetErrorMessage(), OpenErrorText(directory.Path()));
}

TEST(ORDFileReader, SecondOpenWithoutCloseFailsAndKeepsTheFile) {
    OpenRecording recording(OrdHeaderText().Block());
    ASSERT_EQ(recording.status, 0);
    EXPECT_EQ(recording.reader.Open(recording.path), -1);
    EXPECT_EQ(recording.reader.GetErrorMessage(), OpenErrorText(recording.path));
    EXPECT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
}

TEST(ORDFileReader, PathWithAnyCharactersOpens) {
    const OpenRecording recording(OrdHeaderText().Block(), L"r\u00E9c \u03BC\u65E5.ord");
    EXPECT_EQ(recording.status, 0);
}

TEST(ORDFileReader, FileShorterThanTheHeaderBlockIsReadAsItIs) {
    const std::string text = OrdHeaderText().Text();
    OpenRecording recording(text);
    ASSERT_EQ(recording.status, 0);
    EXPECT_EQ(recording.reader.GetHeaderText(), std::wstring(text.begin(), text.end()));
    EXPECT_EQ(recording.reader.NumADChannels(), 32U);
    EXPECT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
    EXPECT_TRUE(recording.endOfFile);
    EXPECT_TRUE(recording.records.empty());
    EXPECT_FALSE(recording.reader.ContradictsVersion());
}

TEST(ORDFileReader, HeaderTextEndsBeforeTheFirstZeroByte) {
    std::string block = OrdHeaderText().Block();
    const std::string text = OrdHeaderText().Text();
    block.replace(text.size() + 1, 9, "-More 123");
    const OpenRecording recording(block);
    EXPECT_EQ(recording.status, 0);
    EXPECT_EQ(recording.reader.GetHeaderText(), std::wstring(text.begin(), text.end()));
}

TEST(ORDFileReader, HeaderTextMayFillTheWholeBlock) {
    OrdHeaderText header;
    header.SetExtraText(std::string(20000, 'x'));
    const OpenRecording recording(header.Block());
    EXPECT_EQ(recording.status, 0);
    EXPECT_EQ(recording.reader.GetHeaderText().size(), 16384U);
}

TEST(ORDFileReader, HeaderBlockThatBeginsWithZeroLacksTheFirstField) {
    const OpenRecording recording('\0' + OrdHeaderText().Block());
    EXPECT_EQ(recording.status, -1);
    EXPECT_EQ(recording.reader.GetHeaderText(), L"");
    EXPECT_EQ(recording.reader.GetErrorMessage(), L"Error retrieving header field -NumADChannels");
}

TEST(ORDFileReader, EmptyFileLacksTheFirstField) {
    const OpenRecording recording("");
    EXPECT_EQ(recording.status, -1);
    EXPECT_EQ(recording.reader.GetErrorMessage(), L"Error retrieving header field -NumADChannels");
}

TEST(ORDFileReader, HeaderIsUtf8IfAllOfItIsElseLatin1) {
    OrdHeaderText header;
    header.Set("-SessionUUID", "\xC2\xB5V");
    EXPECT_EQ(OpenRecording(header.Block()).reader.SessionUUID(), L"\u00B5V");
    header.AddLine("# stray \xB5");
    EXPECT_EQ(OpenRecording(header.Block()).reader.SessionUUID(), L"\u00C2\u00B5V");
}

TEST(ORDFileReader, EmptyStreamIsTheEndOfTheFileAtOnce) {
    OpenRecording recording(OrdHeaderText().Block());
    recording.records.resize(3);
    EXPECT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
    EXPECT_TRUE(recording.endOfFile);
    EXPECT_TRUE(recording.records.empty());
}

TEST(ORDFileReader, GetDataNeedsAnOpenFile) {
    ORDFileReader reader;
    std::vector<ORDDataPacket> records;
    bool endOfFile = true;
    EXPECT_EQ(reader.GetData(records, endOfFile), -1);
    EXPECT_FALSE(endOfFile);
    EXPECT_EQ(reader.GetErrorMessage(), kNotOpen);

    OpenRecording recording(OrdHeaderText().Block());
    ASSERT_EQ(recording.reader.Close(), 0);
    EXPECT_EQ(recording.reader.GetData(records, endOfFile), -1);
    EXPECT_EQ(recording.reader.GetErrorMessage(), kNotOpen);
}

TEST(ORDFileReader, SecondCloseFails) {
    OpenRecording recording(OrdHeaderText().Block());
    EXPECT_EQ(recording.reader.Close(), 0);
    EXPECT_EQ(recording.reader.Close(), -1);
    EXPECT_EQ(recording.reader.GetErrorMessage(), L"Error closing ORD file.");
}

TEST(ORDFileReader, CloseResetsAllButVersionAndUtcOffset) {
    OrdHeaderText header;
    header.Set("-FileVersion", "2.5").Set("-UTCOffsetMicroseconds", "99");
    OpenRecording recording(header.Block());
    ASSERT_EQ(recording.status, 0);
    ASSERT_EQ(recording.reader.Close(), 0);
    EXPECT_EQ(recording.reader.FileVersion(), L"2.5");
    EXPECT_EQ(recording.reader.UTCOffsetMicroseconds(), 99);
    EXPECT_EQ(recording.reader.NumADChannels(), 0U);
    EXPECT_EQ(recording.reader.SamplingFrequency(), 0U);
    EXPECT_EQ(recording.reader.ADMaxValue(), 0U);
    EXPECT_EQ(recording.reader.ADBitVolts(), 0.0);
    EXPECT_EQ(recording.reader.InputRange(), 0U);
    EXPECT_EQ(recording.reader.SessionUUID(), L"");
    EXPECT_EQ(recording.reader.AcquisitionSystem(), L"");
    EXPECT_EQ(recording.reader.GetHeaderText(), L"");
    EXPECT_FALSE(recording.reader.BaseIMUAvailable() || recording.reader.AfeIMUAvailable() ||
                 recording.reader.UltrasonicAvailable());
}

TEST(ORDFileReader, ReusedReaderKeepsTheUtcOffsetForAVersionOneFile) {
    OpenRecording recording(OrdHeaderText().Set("-UTCOffsetMicroseconds", "77").Block());
    ASSERT_EQ(recording.reader.Close(), 0);
    const std::wstring second = recording.directory.Path(L"second.ord");
    WriteFile(second, Version1Header(32).Block());
    ASSERT_EQ(recording.reader.Open(second), 0);
    EXPECT_EQ(recording.reader.FileVersion(), L"1.0");
    EXPECT_EQ(recording.reader.UTCOffsetMicroseconds(), 77);
}

TEST(ORDFileReader, ReaderCanBeClosedAndUsedAgainAfterAFailedOpen) {
    OpenRecording recording(OrdHeaderText().Remove("-InputRange").Block());
    EXPECT_EQ(recording.status, -1);
    EXPECT_EQ(recording.reader.Close(), 0);
    WriteFile(recording.path, OrdHeaderText().Block());
    EXPECT_EQ(recording.reader.Open(recording.path), 0);
}

TEST(ORDFileReader, BytesLeftOfOneFileAreNotThoseOfTheNext) {
    OpenRecording recording(BuildOrdFile(Version1Header(32), {PacketPlan()}, "\4tail"));
    ASSERT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
    ASSERT_EQ(recording.reader.Close(), 0);
    WriteFile(recording.path, BuildOrdFile(Version1Header(32), {PacketPlan(), PacketPlan()}));
    ASSERT_EQ(recording.reader.Open(recording.path), 0);
    ASSERT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
    EXPECT_EQ(recording.records.size(), 2U);
}

TEST(ORDFileReader, NewestErrorTextReplacesTheOneBefore) {
    ORDFileReader reader;
    reader.SetErrorMessage(L"first");
    reader.SetErrorMessage(L"second");
    EXPECT_EQ(reader.GetErrorMessage(), L"second");
}

TEST(ORDFileReader, FailedReadOfTheHeaderIsReported) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"), OrdHeaderText().Block());
    FaultyFileCalls calls;
    calls.readError = SystemErrorFor(SystemErrorKind::kOther);
    ORDFileReader reader;
    EXPECT_EQ(reader.Open(directory.Path(L"rec.ord")), -1);
    EXPECT_EQ(reader.GetErrorMessage(), L"Error reading header from file.");
    EXPECT_EQ(reader.Close(), 0);
}

// A disk that fails at this byte of the file.
struct FailingDisk {
    explicit FailingDisk(std::uint64_t byte) {
        calls.mostBytesPerCall = 1;
        calls.readError = SystemErrorFor(SystemErrorKind::kOther);
        calls.readsUntilError = byte;
    }
    FaultyFileCalls calls;
};

TEST(ORDFileReader, BytesReadBeforeAFailureAreDecodedBeforeItIsReported) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"),
              BuildOrdFile(Version1Header(32), std::vector<PacketPlan>(300)));
    const FailingDisk disk(16384 + 7 * 11 + 5);
    ORDFileReader reader;
    ASSERT_EQ(reader.Open(directory.Path(L"rec.ord")), 0);
    std::vector<ORDDataPacket> records;
    bool endOfFile = true;
    EXPECT_EQ(reader.GetData(records, endOfFile), 0);
    EXPECT_FALSE(endOfFile);
    EXPECT_EQ(records.size(), 7U);
    EXPECT_EQ(reader.NextPacketPosition(), 16384U + 7 * 11);
    EXPECT_EQ(reader.UnconsumedBytes(), 5U);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(reader.GetData(records, endOfFile), -1);
        EXPECT_FALSE(endOfFile);
        EXPECT_EQ(reader.GetErrorMessage(), L"Failed to process input file");
        EXPECT_EQ(reader.SystemError(), disk.calls.readError);
    }
}

TEST(ORDFileReader, HalfABufferBeforeAFailedReadIsDecodedLikeAnyOther) {
    // The length that is refused in the last block is fine here, because the file continues.
    const TempDirectory directory;
    std::vector<PacketPlan> plans(2273);
    for (std::size_t i = 0; i < 8; ++i) plans[i].baseImu.emplace().fill(1);  // 29 bytes, not 11
    const std::size_t size = EncodePackets(plans).size();
    WriteFile(directory.Path(L"rec.ord"),
              BuildOrdFile(Version1Header(32), plans, std::string(25000, '\4')));
    const FailingDisk disk(16384 + 25000);
    ORDFileReader reader;
    ASSERT_EQ(reader.Open(directory.Path(L"rec.ord")), 0);
    std::vector<ORDDataPacket> records;
    bool endOfFile = false;
    EXPECT_EQ(reader.GetData(records, endOfFile), 0);
    EXPECT_GE(records.size(), 25000 * plans.size() / size);
    EXPECT_EQ(reader.GetData(records, endOfFile), -1);
}

TEST(ORDFileReader, NextFileIsReadAfterOneWhoseReadFailed) {
    OpenRecording recording(BuildOrdFile(Version1Header(32), std::vector<PacketPlan>(300)));
    ASSERT_EQ(recording.reader.Close(), 0);
    {
        const FailingDisk disk(16384 + 100);
        ASSERT_EQ(recording.reader.Open(recording.path), 0);
        EXPECT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
        EXPECT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), -1);
        ASSERT_EQ(recording.reader.Close(), 0);
    }
    ASSERT_EQ(recording.reader.Open(recording.path), 0);
    EXPECT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
    EXPECT_EQ(recording.records.size(), 300U);
}

TEST(ORDFileReader, RefusedOpenLeavesTheOpenFileUnchanged) {
    // The file is shorter than its header block, so no further read resets the state.
    OpenRecording recording(OrdHeaderText().Text());
    ASSERT_EQ(recording.status, 0);
    ASSERT_EQ(recording.reader.Open(recording.path), -1);
    EXPECT_EQ(recording.reader.NumADChannels(), 32U);
    EXPECT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
    EXPECT_TRUE(recording.endOfFile);
    EXPECT_EQ(recording.reader.SystemError(), 0);
}

TEST(ORDFileReader, OpenAfterARefusedOneHasNothingOfIt) {
    // The header is refused at its last required field, after all others were read; the reader
    // held bytes of the file before.
    OpenRecording recording(BuildOrdFile(Version1Header(32), {PacketPlan()}, "\4tail"));
    ASSERT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
    ASSERT_EQ(recording.reader.Close(), 0);
    WriteFile(recording.path, Version1Header(64).Remove("-FileVersion").Block());
    ASSERT_EQ(recording.reader.Open(recording.path), -1);
    ASSERT_EQ(recording.reader.Close(), 0);
    EXPECT_EQ(recording.reader.NumADChannels(), 0U);
    EXPECT_EQ(recording.reader.BytesRead(), 0U);
    EXPECT_EQ(recording.reader.UnconsumedBytes(), 0U);
    WriteFile(recording.path, OrdHeaderText().Text());
    ASSERT_EQ(recording.reader.Open(recording.path), 0);
    EXPECT_EQ(recording.reader.GetData(recording.records, recording.endOfFile), 0);
    EXPECT_TRUE(recording.endOfFile && recording.records.empty());
    EXPECT_EQ(recording.reader.UnconsumedBytes(), 0U);
}

TEST(ORDFileReader, ShortAndInterruptedReadsGiveTheSamePackets) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"),
              BuildOrdFile(Version1Header(32), std::vector<PacketPlan>(300)));
    FaultyFileCalls calls;
    calls.mostBytesPerCall = 7;
    calls.interruptionsPerCall = 2;
    ORDFileReader reader;
    ASSERT_EQ(reader.Open(directory.Path(L"rec.ord")), 0);
    std::vector<ORDDataPacket> records;
    bool endOfFile = false;
    EXPECT_EQ(reader.GetData(records, endOfFile), 0);
    EXPECT_TRUE(endOfFile);
    EXPECT_EQ(records.size(), 300U);
}

}  // namespace
}  // namespace stalwick::test
