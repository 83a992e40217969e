// SPDX-License-Identifier: BSD-3-Clause
#include "writers/file_header.h"

#include <string>

#include <gtest/gtest.h>

#include "outputs/vtx_data_types.h"
#include "tests/support/fixed_identity.h"
#include "writers/csc_file_writer_container.h"

namespace stalwick::test {
namespace {

OutputFileRecord ChannelThree() {
    OutputFileRecord record;
    for (std::size_t i = 0; i < 16; ++i) record.fileUuid[i] = static_cast<std::uint8_t>(17 * i);
    record.filePath = L"out/rec/CSC3.vcs";
    record.timeCreated = L"2020/01/02 03:04:05";
    record.recordSize = 1044;
    record.acqEntName = L"CSC3";
    record.channelIndex = 2;
    return record;
}

std::wstring HeaderOf(bool fileClosed, std::uint8_t fileType = VtxDataTypes::kCSC) {
    const FixedIdentity identity;
    FileWriterContainer container{OutputSettings()};
    container.sessionUuid = L"session";
    container.acquisitionSystem = L"Unit 3";
    return BuildFileHeader(container, fileClosed, ChannelThree(), fileType, L"3.4");
}

TEST(FileHeader, LinesAreInOrder) {
    EXPECT_EQ(HeaderOf(true),
              L"######## Veltrosyn Data File Header\r\n"
              L"-FileType CSC\r\n"
              L"-FileVersion 3.4\r\n"
              L"-FileUUID 00112233-4455-6677-8899-aabbccddeeff\r\n"
              L"-SessionUUID session\r\n"
              L"-OriginalFileName \"out/rec/CSC3.vcs\"\r\n"
              L"-TimeCreated 2020/01/02 03:04:05\r\n"
              L"-TimeClosed 2021/03/04 09:05:07\r\n"
              L"\r\n"
              L"-RecordSize 1044\r\n"
              L"-ApplicationName \"Veltrosyn Stalwick\" \"1.2.0.1941\"\r\n"
              L"-AcquisitionSystem Unknown Unit 3\r\n"
              L"-AcqEntName CSC3\r\n");
}

TEST(FileHeader, FileThatIsNotClosedShowsItBeforeAnEmptyLine) {
    EXPECT_NE(HeaderOf(false).find(L"-TimeClosed File was not closed properly\r\n\r\n"),
              std::wstring::npos);
}

TEST(FileHeader, MissingValuesPrintAsNothingAfterTheirKeyAndBlank) {
    const FileWriterContainer container{OutputSettings()};
    const std::wstring text = BuildFileHeader(container, false, OutputFileRecord(), 5, L"3.4");
    EXPECT_NE(text.find(L"-SessionUUID \r\n"), std::wstring::npos);
    EXPECT_NE(text.find(L"-AcquisitionSystem Unknown \r\n"), std::wstring::npos);
    EXPECT_NE(text.find(L"-AcqEntName \r\n"), std::wstring::npos);
    EXPECT_NE(text.find(L"-OriginalFileName \"\"\r\n"), std::wstring::npos);
}

TEST(FileHeader, ControlCharactersOfAPathAreWrittenOut) {
    OutputFileRecord record;
    record.filePath = L"out/a\r\n-SessionUUID forged\x1b[2J/CSC1.vcs";
    const std::wstring text =
        BuildFileHeader(FileWriterContainer{OutputSettings()}, false, record, 5, L"3.4");
    EXPECT_NE(text.find(L"-OriginalFileName \"out/a\\r\\n-SessionUUID forged\\x1b[2J/"
                        L"CSC1.vcs\"\r\n"),
              std::wstring::npos);
    EXPECT_EQ(text.find(L"\n-SessionUUID forged"), std::wstring::npos);
}

TEST(FileHeader, TypeBeyondTheListIsInvalid) {
    EXPECT_EQ(DataTypeName(17), L"Invalid");
    EXPECT_EQ(DataTypeName(255), L"Invalid");
    EXPECT_NE(HeaderOf(false, 0).find(L"-FileType Invalid\r\n"), std::wstring::npos);
    EXPECT_NE(HeaderOf(false, 17).find(L"-FileType Invalid\r\n"), std::wstring::npos);
}

TEST(FileHeader, PathWithQuotesIsNotQuotedTwiceInTheHeader) {
    OutputFileRecord record = ChannelThree();
    record.filePath = L"\"out/rec/CSC3.vcs\"";
    const FileWriterContainer container{OutputSettings()};
    const std::wstring text = BuildFileHeader(container, false, record, 5, L"3.4");
    EXPECT_NE(text.find(L"\r\n-OriginalFileName \"out/rec/CSC3.vcs\"\r\n"), std::wstring::npos);
}

TEST(FileHeader, ChannelLinesAreInOrder) {
    CSCFileWriterContainer container{OutputSettings()};
    container.adMaxValue = 32767;
    EXPECT_EQ(ChannelHeaderLines(container, 30000.0, 2),
              L"-ProbeName Unknown\r\n"
              L"-ReferenceChannel \"External Hardware Reference\"\r\n"
              L"-SamplingFrequency 30000\r\n"
              L"-ADMaxValue 32767\r\n"
              L"-ADBitVolts 0.000003999999999999999819\r\n"
              L"-NumADChannels 1\r\n"
              L"-ADChannel 2\r\n"
              L"-InputRange 131072\r\n");
}

}  // namespace
}  // namespace stalwick::test
