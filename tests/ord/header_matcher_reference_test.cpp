// SPDX-License-Identifier: BSD-3-Clause

// Compares the header matcher with the patterns that it implements, run by the standard library's
// regular expressions on small texts in which every character is a corner case.

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "ord/header_fields.h"
#include "platform/text_encoding.h"
#include "tests/support/program_header.h"
#include "tests/support/reference_header.h"

namespace stalwick::test {
namespace {

// Pieces rather than characters, so that keys come up often.
std::wstring RandomText(std::mt19937_64& random, const std::vector<std::wstring>& pieces,
                        std::size_t mostPieces) {
    std::wstring text;
    for (std::uint64_t left = random() % (mostPieces + 1); left > 0; --left) {
        text += pieces[random() % pieces.size()];
    }
    return text;
}

TEST(HeaderMatcherReference, LinesAndTokensAreThoseOfThePatterns) {
    const std::vector<std::wstring> pieces = {
        L"-a", L"-A", L"-ab", L"-AB", L"-",  L"a",  L"b",  L"B",      L"\"",     L"#",
        L" ",  L" ",  L"\r",  L"\n",  L"\t", L"\v", L"\f", L"\u00A0", L"\u017F", L"7"};
    std::mt19937_64 random(1);
    for (int i = 0; i < 6000; ++i) {
        const std::wstring text = RandomText(random, pieces, 14);
        for (const wchar_t* key : {L"-a", L"-ab", L"-"}) {
            ASSERT_EQ(GetHeaderFieldValues(text, key), ReferenceHeaderFieldValues(text, key))
                << testing::PrintToString(ToUtf8(text)) << " key " << ToUtf8(key);
        }
    }
}

TEST(HeaderMatcherReference, QuotesAreThoseOfThePatterns) {
    const std::vector<std::wstring> pieces = {L"\"", L"\"", L"\"", L" ", L" ", L"\t", L"x", L"yz"};
    std::mt19937_64 random(2);
    for (int i = 0; i < 6000; ++i) {
        const std::wstring text = L"\n-k" + RandomText(random, pieces, 12);
        ASSERT_EQ(GetHeaderFieldValues(text, L"-k"), ReferenceHeaderFieldValues(text, L"-k"))
            << testing::PrintToString(ToUtf8(text));
    }
}

TEST(HeaderMatcherReference, VersionNumbersAreThoseOfThePattern) {
    const std::vector<std::wstring> pieces = {L"0", L"1",  L"2",  L"9", L".", L".",     L"-",
                                              L" ", L"\n", L"\r", L"v", L"+", L"\u0663"};
    std::mt19937_64 random(3);
    for (int i = 0; i < 6000; ++i) {
        const std::wstring text = RandomText(random, pieces, 9);
        ASSERT_EQ(VersionStringToNumber(text), ReferenceVersionNumber(text))
            << testing::PrintToString(ToUtf8(text));
    }
}

TEST(HeaderMatcherReference, LongVersionNumbersAreThoseOfThePattern) {
    const std::vector<std::wstring> pieces = {L"2", L"1", L"4", L"7", L"8", L"3", L"6", L"."};
    std::mt19937_64 random(4);
    for (int i = 0; i < 2000; ++i) {
        const std::wstring text = RandomText(random, pieces, 13);
        ASSERT_EQ(VersionStringToNumber(text), ReferenceVersionNumber(text)) << ToUtf8(text);
    }
}

TEST(HeaderMatcherReference, EveryShortVersionTextIsThatOfThePattern) {
    const std::wstring alphabet = L"07.-\n";
    for (int code = 0; code < 5 * 5 * 5 * 5 * 5; ++code) {
        std::wstring text;
        for (int rest = code; rest > 0; rest /= 5) {
            text += alphabet[static_cast<std::size_t>(rest % 5)];
        }
        ASSERT_EQ(VersionStringToNumber(text), ReferenceVersionNumber(text)) << ToUtf8(text);
    }
}

// Lines of every key, in any order and often more than once, with values of every kind.
std::wstring RandomHeader(std::mt19937_64& random) {
    const std::vector<std::wstring> keys = {L"-NumADChannels",
                                            L"-SamplingFrequency",
                                            L"-ADMaxValue",
                                            L"-ADBitVolts",
                                            L"-InputRange",
                                            L"-FileVersion",
                                            L"-UTCOffsetMicroseconds",
                                            L"-SessionUUID",
                                            L"-AcquisitionSystem",
                                            L"-UltrasonicAvailable",
                                            L"-BaseIMUAvailable",
                                            L"-AfeIMUAvailable"};
    const std::vector<std::wstring> values = {L"1",
                                              L"0",
                                              L"2.0",
                                              L"1.0",
                                              L"64",
                                              L"-3600000000",
                                              L"0.000000305",
                                              L"x",
                                              L"\"a b\" c",
                                              L"1 1",
                                              L"\"\"",
                                              L"1 # 2",
                                              L"",
                                              L"99999999999999999999"};
    std::wstring text = L"## recording\r\n";
    for (const std::wstring& key : keys) {
        for (std::uint64_t count = random() % 16 == 0 ? 0 : 1 + random() % 2; count > 0; --count) {
            text += key + L" " + values[random() % values.size()] + L"\r\n";
        }
    }
    return text;
}

TEST(HeaderMatcherReference, EveryFieldIsThatOfTheReference) {
    std::mt19937_64 random(6);
    int complete = 0;
    for (int i = 0; i < 1000; ++i) {
        const std::wstring text = RandomHeader(random);
        const ReferenceHeaderFields expected = ReferenceReadHeaderFields(text);
        const ReferenceHeaderFields fields = ProgramHeaderFields(text);
        ASSERT_EQ(fields.errorText, expected.errorText) << ToUtf8(text);
        if (!expected.errorText.empty()) continue;
        ++complete;
        ASSERT_TRUE(fields == expected) << ToUtf8(text);
    }
    EXPECT_GT(complete, 200);
}

}  // namespace
}  // namespace stalwick::test
