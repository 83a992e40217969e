// SPDX-License-Identifier: BSD-3-Clause

// Headers that make a backtracking or recursing matcher hang or run out of stack.

#include <string>

#include <gtest/gtest.h>

#include "ord/header_fields.h"
#include "ord/ord_file_reader.h"
#include "tests/support/ord_builder.h"
#include "tests/support/small_stack_thread.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

struct OpenResult {
    std::int32_t status = 0;
    std::wstring errorText;
};

OpenResult OpenOnSmallStack(const std::string& recording) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"), recording);
    OpenResult result;
    RunOnSmallStack([&] {
        ORDFileReader reader;
        result.status = reader.Open(directory.Path(L"rec.ord"));
        result.errorText = reader.GetErrorMessage();
    });
    return result;
}

// The result for a header block that repeats one line of the text.
std::wstring ErrorOfHeaderOf(const std::string& piece) {
    std::string block;
    while (block.size() < kOrdHeaderBytes) block += piece;
    const OpenResult result = OpenOnSmallStack(block.substr(0, kOrdHeaderBytes));
    EXPECT_EQ(result.status, -1);
    return result.errorText;
}

TEST(HostileHeader, OneLineThatFillsTheBlockIsReadOnASmallStack) {
    const std::wstring missing = L"Error retrieving header field -NumADChannels";
    EXPECT_EQ(ErrorOfHeaderOf("x"), missing);
    EXPECT_EQ(ErrorOfHeaderOf(" "), missing);
    EXPECT_EQ(ErrorOfHeaderOf("\""), missing);
    EXPECT_EQ(ErrorOfHeaderOf(" \""), missing);
    EXPECT_EQ(ErrorOfHeaderOf("-"), missing);
    EXPECT_EQ(ErrorOfHeaderOf(" -NumADChannel"), missing);
}

TEST(HostileHeader, ValueThatFillsTheBlockIsReadOnASmallStack) {
    for (const char filler : {'x', ' ', '"', '1'}) {
        OrdHeaderText header;
        header.SetExtraText("-Note " + std::string(kOrdHeaderBytes, filler));
        EXPECT_EQ(OpenOnSmallStack(header.Block()).status, 0) << filler;
        header.SetExtraText("-SessionUUIDs \"" + std::string(kOrdHeaderBytes, filler));
        EXPECT_EQ(OpenOnSmallStack(header.Block()).status, 0) << filler;
    }
}

TEST(HostileHeader, KeysWithoutNumberFillTheBlock) {
    std::string text = "\n";
    while (text.size() < kOrdHeaderBytes) text += "-NumADChannels # \n";
    EXPECT_EQ(OpenOnSmallStack(text.substr(0, kOrdHeaderBytes)).errorText,
              L"Error retrieving header field -NumADChannels");
}

TEST(HostileHeader, VersionOfSixtyDigitsAndTwoFullStopsIsNoVersionAtOnce) {
    RunOnSmallStack([] {
        EXPECT_EQ(VersionStringToNumber(std::wstring(60, L'1') + L"..1"), -1);
        EXPECT_EQ(VersionStringToNumber(std::wstring(16000, L'1') + L"..1"), -1);
        EXPECT_EQ(VersionStringToNumber(std::wstring(16000, L'1')), -1);
        std::wstring stops = L"1";
        for (int i = 0; i < 8000; ++i) stops += L".1";
        EXPECT_EQ(VersionStringToNumber(stops), -1);
    });
}

TEST(HostileHeader, RecordingWithSuchAVersionOpensWithoutTimestamps) {
    OrdHeaderText header;
    header.Set("-FileVersion", std::string(60, '1') + "..1").Remove("-UTCOffsetMicroseconds");
    EXPECT_EQ(OpenOnSmallStack(header.Block()).status, 0);
}

}  // namespace
}  // namespace stalwick::test
