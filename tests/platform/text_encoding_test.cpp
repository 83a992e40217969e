// SPDX-License-Identifier: BSD-3-Clause
#include "platform/text_encoding.h"

#include <string>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

TEST(TextEncoding, NarrowTextIsUtf8) {
    EXPECT_EQ(ToUtf8(L"a\u00B5\u65E5"), "a\xC2\xB5\xE6\x97\xA5");
    EXPECT_EQ(FromUtf8("a\xC2\xB5\xE6\x97\xA5"), L"a\u00B5\u65E5");
    EXPECT_EQ(ToUtf8(FromUtf8("\xF0\x9F\x90\x80")), "\xF0\x9F\x90\x80");
}

TEST(TextEncoding, EveryByteComesBackThroughAWidePath) {
    std::string bytes;
    for (int first = 1; first < 256; ++first) {
        for (int second = 1; second < 256; second += 3) {
            bytes += static_cast<char>(first);
            bytes += static_cast<char>(second);
        }
    }
    EXPECT_EQ(ToUtf8(FromUtf8(bytes)), bytes);
}

TEST(TextEncoding, Utf8IsTheShortestFormOfRealCharacters) {
    for (const char* valid : {"", "a", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF",
                              "\xEE\x80\x80", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(IsValidUtf8(valid)) << valid;
    }
    for (const char* invalid : {"\x80", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2\x41", "\xE0\x9F\xBF",
                                "\xE2\x82", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF",
                                "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        EXPECT_FALSE(IsValidUtf8(invalid)) << testing::PrintToString(invalid);
    }
}

TEST(TextEncoding, HeaderIsUtf8IfAllOfItIsElseOneCharacterAByte) {
    EXPECT_EQ(DecodeHeaderBytes("\xC2\xB5V"), L"\u00B5V");
    EXPECT_EQ(DecodeHeaderBytes("\xC2\xB5V \xB5"), L"\u00C2\u00B5V \u00B5");
    EXPECT_EQ(DecodeHeaderBytes("\xFF"), L"\u00FF");
    EXPECT_EQ(DecodeHeaderBytes(""), L"");
}

TEST(TextEncoding, OneLineHasNoControlCharacters) {
    EXPECT_EQ(OneLine(L"a b"), L"a b");
    EXPECT_EQ(OneLine(L"a\nb\rc\td"), L"a\\nb\\rc\\td");
    EXPECT_EQ(OneLine(L"\x1b[2J\x7f"), L"\\x1b[2J\\x7f");
    EXPECT_EQ(OneLine(L"\u0085\u00B5"), L"\\x85\u00B5");
    EXPECT_EQ(OneLine(L"\U0001F480"), L"\U0001F480");  // in UTF-16 with a unit like such a byte's
    // A byte that is not UTF-8 is kept and printed unchanged, unless it is a control too.
    EXPECT_EQ(ToUtf8(OneLine(FromUtf8("a\x9b"
                                      "2J\xe9"))),
              "a\\x9b2J\xe9");
}

}  // namespace
}  // namespace stalwick
