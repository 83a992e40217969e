// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/synth_options.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/ord_synth/recording_header.h"

namespace stalwick {
namespace {

bool HasLine(const std::string& text, const std::string& line) {
    return text.find("\r\n" + line + "\r\n") != std::string::npos;
}

TEST(OrdSynthOptionsTest, SecondsMayHaveAFraction) {
    std::uint64_t microseconds = 0;
    EXPECT_TRUE(ParseSecondsToMicroseconds("2", microseconds));
    EXPECT_EQ(microseconds, 2'000'000U);
    EXPECT_TRUE(ParseSecondsToMicroseconds("0.25", microseconds));
    EXPECT_EQ(microseconds, 250'000U);
    EXPECT_TRUE(ParseSecondsToMicroseconds("12.000001", microseconds));
    EXPECT_EQ(microseconds, 12'000'001U);
}

TEST(OrdSynthOptionsTest, WhatIsNoPlainDecimalNumberIsRefused) {
    std::uint64_t microseconds = 0;
    for (const char* text : {"", ".", ".5", "1.", "-1", "+1", "1e3", "1.2.3", "0x10", " 1", "1 ",
                             "1.0000001", "12345678901", "nan", "1.-5"}) {
        EXPECT_FALSE(ParseSecondsToMicroseconds(text, microseconds)) << text;
    }
}

TEST(OrdSynthOptionsTest, PacketsAreRoundedToTheNearestWholeOne) {
    EXPECT_EQ(PacketsInMicroseconds(1'000'000, 30000), 3000U);
    EXPECT_EQ(PacketsInMicroseconds(1'000'000, 32556), 3256U);
    EXPECT_EQ(PacketsInMicroseconds(499, 30000), 1U);
    EXPECT_EQ(PacketsInMicroseconds(500, 30000), 2U);
    EXPECT_EQ(PacketsInMicroseconds(1, 30000), 1U);
    EXPECT_EQ(PacketsInMicroseconds(9'999'999'999'000'000, 100'000), 99'999'999'990'000U);
}

TEST(OrdSynthOptionsTest, AChannelListNamesChannelsAndRanges) {
    std::vector<std::uint32_t> channels;
    EXPECT_TRUE(ParseChannelList("30-31,2,4-6,5", 32, channels));
    EXPECT_EQ(channels, (std::vector<std::uint32_t>{2, 4, 5, 6, 30, 31}));
}

TEST(OrdSynthOptionsTest, WhatIsNoChannelListIsRefused) {
    std::vector<std::uint32_t> channels;
    for (const char* text : {"", ",", "1,", "-", "1-", "-1", "3-1", "32", "0-32", "a", "1-2-3",
                             "99999999999999999999"}) {
        EXPECT_FALSE(ParseChannelList(text, 32, channels)) << text;
    }
}

TEST(OrdSynthOptionsTest, TheHeaderNamesWhatTheRecordingHolds) {
    SynthOptions options;
    options.channelCount = 128;
    options.samplingFrequency = 20000;
    options.afeImu = true;
    options.utcOffsetMicroseconds = -3'600'000'000;
    const std::string header = MakeRecordingHeader(options);
    EXPECT_EQ(header.size(), 16384U);
    EXPECT_TRUE(HasLine(header, "-FileVersion 2.0"));
    EXPECT_TRUE(HasLine(header, "-NumADChannels 128"));
    EXPECT_TRUE(HasLine(header, "-SamplingFrequency 20000"));
    EXPECT_TRUE(HasLine(header, "-UTCOffsetMicroseconds -3600000000"));
    EXPECT_TRUE(HasLine(header, "-BaseIMUAvailable 0"));
    EXPECT_TRUE(HasLine(header, "-AfeIMUAvailable 1"));
    EXPECT_TRUE(HasLine(header, "-UltrasonicAvailable 0"));
}

TEST(OrdSynthOptionsTest, AHeaderOfVersion1HasNoUtcOffset) {
    SynthOptions options;
    options.hardwareTimestamps = false;
    const std::string header = MakeRecordingHeader(options);
    EXPECT_TRUE(HasLine(header, "-FileVersion 1.0"));
    EXPECT_EQ(header.find("UTCOffset"), std::string::npos);
}

}  // namespace
}  // namespace stalwick
