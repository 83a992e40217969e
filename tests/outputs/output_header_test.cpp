// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/output_header.h"

#include <gtest/gtest.h>

#include "tests/outputs/reference_outputs.h"

namespace stalwick::test {
namespace {

std::string BlockOf(std::string text) {
    text.resize(16384, '\0');
    return text;
}

std::string ChannelText() {
    return ReferenceCommonHeader(HeaderLinesOf("CSC", 1044, "CSC3"));
}

std::string Without(const std::string& key) {
    std::string text = ChannelText();
    const auto line = text.find("\r\n" + key + " ");
    text.erase(line, text.find("\r\n", line + 2) - line);
    return text;
}

TEST(OutputHeader, FindsEveryValueByItsKey) {
    OutputHeader header;
    ASSERT_EQ(header.Read(BlockOf(ChannelText())), L"");
    EXPECT_EQ(header.Find(L"-FileType"), L"CSC");
    EXPECT_EQ(header.Find(L"-FileVersion"), L"3.4");
    EXPECT_EQ(header.Find(L"-AcquisitionSystem"), L"Unknown Unit 3");
    EXPECT_EQ(header.Find(L"-RecordSize"), L"1044");
    EXPECT_EQ(header.Find(L"-Record"), std::nullopt);
    EXPECT_EQ(header.Find(L"-InputRange"), std::nullopt);
    EXPECT_EQ(header.Text().size(), ChannelText().size());
}

TEST(OutputHeader, EmptyValueIsThere) {
    ReferenceHeaderLines lines = HeaderLinesOf("CSC", 1044, "CSC3");
    lines.sessionUuid.clear();
    OutputHeader header;
    ASSERT_EQ(header.Read(BlockOf(ReferenceCommonHeader(lines))), L"");
    EXPECT_EQ(header.Find(L"-SessionUUID"), L"");
}

TEST(OutputHeader, KeyInsideAValueIsNoLine) {
    ReferenceHeaderLines lines = HeaderLinesOf("CSC", 1044, "CSC3");
    lines.path = "/data/-TimeClosed 2021/03/04 09:05:07";
    OutputHeader header;
    ASSERT_EQ(header.Read(BlockOf(ReferenceCommonHeader(lines))), L"");
    EXPECT_FALSE(header.SaysClosed());
}

TEST(OutputHeader, OnlyATimeSaysClosed) {
    ReferenceHeaderLines lines = HeaderLinesOf("CSC", 1044, "CSC3");
    const auto saysClosed = [&](const char* text) {
        lines.timeClosed = text;
        OutputHeader header;
        EXPECT_EQ(header.Read(BlockOf(ReferenceCommonHeader(lines))), L"");
        return header.SaysClosed();
    };
    EXPECT_TRUE(saysClosed("2021/03/04 09:05:07"));
    EXPECT_FALSE(saysClosed("File was not closed properly"));
    EXPECT_FALSE(saysClosed(""));
    EXPECT_FALSE(saysClosed("2021/03/04 09:05:0"));
    EXPECT_FALSE(saysClosed("2021/03/04 09:05:071"));
    EXPECT_FALSE(saysClosed("2021/03/04 09.05:07"));
    EXPECT_FALSE(saysClosed("2021/03/0x 09:05:07"));
}

TEST(OutputHeader, NumberIsAWholeOne) {
    ReferenceHeaderLines lines = HeaderLinesOf("CSC", 1044, "12x");
    OutputHeader header;
    ASSERT_EQ(header.Read(BlockOf(ReferenceCommonHeader(lines))), L"");
    EXPECT_EQ(header.Number(L"-RecordSize"), 1044U);
    EXPECT_EQ(header.Number(L"-AcqEntName"), std::nullopt);
    EXPECT_EQ(header.Number(L"-NoSuchKey"), std::nullopt);
}

TEST(OutputHeader, TextIsUtf8) {
    ReferenceHeaderLines lines = HeaderLinesOf("CSC", 1044, "CSC3");
    lines.path = "/data/\xC3\xA9";
    OutputHeader header;
    ASSERT_EQ(header.Read(BlockOf(ReferenceCommonHeader(lines))), L"");
    EXPECT_EQ(header.Find(L"-OriginalFileName"), L"\"/data/\u00E9\"");
}

TEST(OutputHeader, FullBlockNeedsNoZero) {
    std::string text = ChannelText() + "-Filler ";
    text.resize(16382, 'x');
    OutputHeader header;
    EXPECT_EQ(header.Read(text + "\r\n"), L"");
    EXPECT_EQ(header.Text().size(), 16384U);
}

TEST(OutputHeader, EveryCommonLineMustBeThere) {
    const std::string keys[] = {"-FileType",    "-FileVersion",      "-FileUUID",
                                "-SessionUUID", "-OriginalFileName", "-TimeCreated",
                                "-TimeClosed",  "-RecordSize",       "-ApplicationName",
                                "-AcqEntName",  "-AcquisitionSystem"};
    for (const std::string& key : keys) {
        OutputHeader header;
        const std::wstring wide(key.begin(), key.end());
        EXPECT_EQ(header.Read(BlockOf(Without(key))), L"its header has no " + wide + L" line");
    }
}

TEST(OutputHeader, OtherTextIsNotOne) {
    OutputHeader header;
    const std::wstring fault = L"it does not begin like an output of this program";
    EXPECT_EQ(header.Read(BlockOf("")), fault);
    EXPECT_EQ(header.Read(BlockOf("a" + ChannelText())), fault);
    EXPECT_EQ(header.Read(BlockOf(ChannelText().substr(0, 20))), fault);
}

TEST(OutputHeader, CutTextIsReported) {
    OutputHeader header;
    EXPECT_EQ(header.Read(BlockOf(ChannelText().substr(0, ChannelText().size() - 1))),
              L"the last line of its header has no end");
}

TEST(OutputHeader, BytesInThePaddingAreReported) {
    std::string block = BlockOf(ChannelText());
    block[16383] = 'x';
    OutputHeader header;
    EXPECT_EQ(header.Read(block), L"byte 16383 of its header, after the text, is not 0");
    EXPECT_EQ(header.Text(), L"");
}

}  // namespace
}  // namespace stalwick::test
