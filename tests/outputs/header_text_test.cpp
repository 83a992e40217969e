// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/header_text.h"

#include <gtest/gtest.h>

namespace stalwick::test {
namespace {

TEST(HeaderText, LineIsKeyBlankValueAndLineEnd) {
    EXPECT_EQ(HeaderLine(L"-Key", L"a value"), L"-Key a value\r\n");
    EXPECT_EQ(HeaderLine(L"-Key", L""), L"-Key \r\n");
}

TEST(HeaderText, TypeBeyondTheListIsInvalid) {
    EXPECT_EQ(DataTypeName(17), L"Invalid");
    EXPECT_EQ(DataTypeName(255), L"Invalid");
}

TEST(HeaderText, UuidPrintsItsBytesInFiveGroups) {
    Uuid bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(17 * i);
    EXPECT_EQ(FormatUuid(bytes), L"00112233-4455-6677-8899-aabbccddeeff");
}

TEST(HeaderText, TypesHaveTheirNames) {
    const wchar_t* const names[] = {L"Invalid",
                                    L"SingleElectrode",
                                    L"Stereotrode",
                                    L"Timestamp",
                                    L"Tetrode",
                                    L"CSC",
                                    L"Event",
                                    L"Video",
                                    L"Raw",
                                    L"MClustTS",
                                    L"VCC",
                                    L"SessionIndex",
                                    L"Subject",
                                    L"DataProcessingErrors",
                                    L"PersystLayout",
                                    L"PersystData",
                                    L"StimulationData"};
    for (std::uint8_t type = 0; type < 17; ++type) EXPECT_EQ(DataTypeName(type), names[type]);
}

TEST(HeaderText, QuotesThatAreThereAreNotRepeated) {
    EXPECT_EQ(QuoteFileName(L"a b"), L"\"a b\"");
    EXPECT_EQ(QuoteFileName(L"\"a b\""), L"\"a b\"");
    EXPECT_EQ(QuoteFileName(L"\"a b"), L"\"a b\"");
    EXPECT_EQ(QuoteFileName(L"a b\""), L"\"a b\"");
}

TEST(HeaderText, NumbersPrintAsStreamsPrintThem) {
    const auto general = [](double value) {
        return FormatDouble(value, std::chars_format::general, 6);
    };
    EXPECT_EQ(general(30000.0), L"30000");
    EXPECT_EQ(general(210000.0), L"210000");
    EXPECT_EQ(general(1234567.0), L"1.23457e+06");
    EXPECT_EQ(general(4294967295.0), L"4.29497e+09");
    EXPECT_EQ(general(131072.0), L"131072");
    EXPECT_EQ(FormatDouble(1.5625e-8, std::chars_format::scientific, 6), L"1.562500e-08");
    EXPECT_EQ(FormatDouble(4e-06, std::chars_format::fixed, 24), L"0.000003999999999999999819");
}

}  // namespace
}  // namespace stalwick::test
