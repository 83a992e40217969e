// SPDX-License-Identifier: BSD-3-Clause
#include "ord/header_fields.h"

#include <cstdint>
#include <locale>
#include <string>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

using Lines = std::vector<HeaderTokens>;

Lines Values(const std::wstring& text, const std::wstring& key = L"-Key") {
    return GetHeaderFieldValues(text, key);
}

TEST(HeaderFields, KeyNeedsABeginningMinus) {
    EXPECT_EQ(Values(L"\nKey 1", L"Key"), Lines{});
    EXPECT_EQ(Values(L"\n 1", L""), Lines{});
}

TEST(HeaderFields, KeyIsFoundInAnyLetterCase) {
    EXPECT_EQ(Values(L"\r\n-numadchannels 4\r\n", L"-NumADChannels"), (Lines{{L"4"}}));
    EXPECT_EQ(Values(L"\r\n-NUMADCHANNELS 4\r\n", L"-NumADChannels"), (Lines{{L"4"}}));
}

TEST(HeaderFields, KeyAtTheVeryFirstCharacterIsNotFound) {
    EXPECT_EQ(Values(L"-Key 1\r\n"), Lines{});
    EXPECT_EQ(Values(L" -Key 1\r\n"), (Lines{{L"1"}}));
}

TEST(HeaderFields, KeyMatchesAsTheBeginningOfALongerOne) {
    EXPECT_EQ(Values(L"\n-FileVersionX 3\n", L"-FileVersion"), (Lines{{L"X", L"3"}}));
}

TEST(HeaderFields, KeyBeforeTheLineEndHasNoMatch) {
    EXPECT_EQ(Values(L"\n-Key\r\n-Other 1"), Lines{});
    EXPECT_EQ(Values(L"\n-Key"), Lines{});
    EXPECT_EQ(Values(L"\n-Key# 1"), Lines{});
}

TEST(HeaderFields, KeyInsideACommentIsFound) {
    EXPECT_EQ(Values(L"\n# note -Key 7\n"), (Lines{{L"7"}}));
}

TEST(HeaderFields, CommentEndsTheValue) {
    EXPECT_EQ(Values(L"\n-Key 1 2#3 4\n"), (Lines{{L"1", L"2"}}));
}

TEST(HeaderFields, ValueThatIsOnlyACommentIsALineWithoutTokens) {
    EXPECT_EQ(Values(L"\n-InputRange # none\n", L"-InputRange"), (Lines{{}}));
}

TEST(HeaderFields, EveryLineOfAKeyIsListedInOrder) {
    EXPECT_EQ(Values(L"\n-Key 1\n-Other 2\n-Key 3 4\n"), (Lines{{L"1"}, {L"3", L"4"}}));
}

TEST(HeaderFields, KeyInsideTheValueOfItsOwnLineIsNoSecondLine) {
    EXPECT_EQ(Values(L"\n-Key 1 -Key 2\n"), (Lines{{L"1", L"-Key", L"2"}}));
}

TEST(HeaderFields, LoneCarriageReturnOrLineFeedEndsAValue) {
    EXPECT_EQ(Values(L"\r-Key 1\r-Other 2\n-Key 3"), (Lines{{L"1"}, {L"3"}}));
}

TEST(HeaderFields, QuotedTextIsOneTokenWithoutItsQuotes) {
    EXPECT_EQ(SplitHeaderValue(L" \"My System\" Unit2"), (HeaderTokens{L"My System", L"Unit2"}));
}

TEST(HeaderFields, QuoteWithoutSpaceBeforeItIsPartOfAWord) {
    EXPECT_EQ(SplitHeaderValue(L"\"a b\""), (HeaderTokens{L"\"a", L"b\""}));
}

TEST(HeaderFields, EmptyQuotedValueIsTheTwoQuoteCharacters) {
    EXPECT_EQ(SplitHeaderValue(L" \"\""), HeaderTokens{L"\"\""});
}

TEST(HeaderFields, UnclosedQuoteIsPartOfAWord) {
    EXPECT_EQ(SplitHeaderValue(L" \"a b"), (HeaderTokens{L"\"a", L"b"}));
}

TEST(HeaderFields, WhiteSpaceIsThatOfASCII) {
    EXPECT_EQ(SplitHeaderValue(L" a\tb\vc\fd"), (HeaderTokens{L"a", L"b", L"c", L"d"}));
    EXPECT_EQ(SplitHeaderValue(L" a\u00A0b\u2003c"), HeaderTokens{L"a\u00A0b\u2003c"});
}

template <typename Target>
Target Converted(const std::wstring& token, Target target) {
    ConvertToken(token, target);
    return target;
}

TEST(HeaderFields, NumberIsTheLongestPrefixThatReadsAsOne) {
    EXPECT_EQ(Converted<std::uint32_t>(L"30000.0", 7), 30000U);
    EXPECT_EQ(Converted<std::uint32_t>(L"30000.5", 7), 30000U);
    EXPECT_EQ(Converted<std::int32_t>(L"-12abc", 7), -12);
    EXPECT_EQ(Converted<std::int64_t>(L"1600000000000000", 7), 1600000000000000);
    EXPECT_EQ(Converted<double>(L"0.000000061", 7), 0.000000061);
    EXPECT_EQ(Converted<double>(L"1.5e-8x", 7), 1.5e-8);
}

// Numbers as the program's user writes them.
class OtherNumbers final : public std::numpunct<wchar_t> {
    wchar_t do_decimal_point() const override { return L','; }
    wchar_t do_thousands_sep() const override { return L'.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(HeaderFields, NumbersDoNotDependOnTheProgramsLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new OtherNumbers));
    double volts = 0;
    const bool converted = ConvertToken(L"0.25", volts);
    std::locale::global(before);
    EXPECT_TRUE(converted);
    EXPECT_EQ(volts, 0.25);
}

TEST(HeaderFields, TextIsTheFirstWordOfTheToken) {
    EXPECT_EQ(Converted<std::wstring>(L"My System", L""), L"My");
    EXPECT_EQ(Converted<std::wstring>(L"  two words", L""), L"two");
}

TEST(HeaderFields, ConversionSaysWhetherItSucceeded) {
    std::uint32_t number = 7;
    EXPECT_TRUE(ConvertToken(L"1", number));
    EXPECT_FALSE(ConvertToken(L"x", number));
    EXPECT_FALSE(ConvertToken(L"4294967296", number));
    std::wstring text = L"before";
    EXPECT_FALSE(ConvertToken(L"  ", text));
    EXPECT_EQ(text, L"before");
}

TEST(HeaderFields, VersionIsItsDigitsJoinedAcrossFullStops) {
    EXPECT_EQ(VersionStringToNumber(L"1.0"), 10);
    EXPECT_EQ(VersionStringToNumber(L"2.0"), 20);
    EXPECT_EQ(VersionStringToNumber(L"2.1"), 21);
    EXPECT_EQ(VersionStringToNumber(L"2"), 2);
    EXPECT_EQ(VersionStringToNumber(L"2.0.3"), 203);
    EXPECT_EQ(VersionStringToNumber(L"2.0."), 20);
}

TEST(HeaderFields, VersionOneTenCountsAsOneHundredAndTen) {
    EXPECT_EQ(VersionStringToNumber(L"1.10"), 110);
}

TEST(HeaderFields, AnotherSeparatorEndsTheVersionNumber) {
    EXPECT_EQ(VersionStringToNumber(L"2-0"), 2);
    EXPECT_EQ(VersionStringToNumber(L"1.2-3.4"), 12);
}

TEST(HeaderFields, TextThatIsNoVersionIsMinusOne) {
    EXPECT_EQ(VersionStringToNumber(L""), -1);
    EXPECT_EQ(VersionStringToNumber(L"v2.0"), -1);
    EXPECT_EQ(VersionStringToNumber(L".2"), -1);
    EXPECT_EQ(VersionStringToNumber(L"2..0"), -1);
    EXPECT_EQ(VersionStringToNumber(L"2\n0"), -1);
}

TEST(HeaderFields, VersionBeyondTheRangeIsMinusOne) {
    EXPECT_EQ(VersionStringToNumber(L"2147483647"), 2147483647);
    EXPECT_EQ(VersionStringToNumber(L"2147483648"), -1);
    EXPECT_EQ(VersionStringToNumber(L"214748364.8"), -1);
}

}  // namespace
}  // namespace stalwick
