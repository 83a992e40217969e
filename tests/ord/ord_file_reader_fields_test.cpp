// SPDX-License-Identifier: BSD-3-Clause
#include <string>

#include <gtest/gtest.h>

#include "ord/ord_file_reader.h"
#include "tests/support/ord_builder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

// A reader that has just tried to open a recording with this header.
struct Opened {
    explicit Opened(const OrdHeaderText& header) {
        WriteFile(directory.Path(L"rec.ord"), header.Block());
        status = reader.Open(directory.Path(L"rec.ord"));
    }

    TempDirectory directory;
    ORDFileReader reader;
    std::int32_t status = 0;
};

TEST(ORDFileReader, CompleteHeaderFillsEveryField) {
    const Opened opened{OrdHeaderText()};
    ASSERT_EQ(opened.status, 0);
    EXPECT_EQ(opened.reader.NumADChannels(), 32U);
    EXPECT_EQ(opened.reader.SamplingFrequency(), 30000U);
    EXPECT_EQ(opened.reader.ADMaxValue(), 32767U);
    EXPECT_EQ(opened.reader.ADBitVolts(), 0.00000012);
    EXPECT_EQ(opened.reader.InputRange(), 1000U);
    EXPECT_EQ(opened.reader.FileVersion(), L"2.0");
    EXPECT_EQ(opened.reader.UTCOffsetMicroseconds(), 1600000000000000);
    EXPECT_EQ(opened.reader.SessionUUID(), L"6f0e4c52-98d1-4a37-b2c6-1d5e7a90f384");
    EXPECT_EQ(opened.reader.AcquisitionSystem(), L"Unit3");
    EXPECT_TRUE(opened.reader.BaseIMUAvailable());
    EXPECT_TRUE(opened.reader.AfeIMUAvailable());
    EXPECT_TRUE(opened.reader.UltrasonicAvailable());
}

TEST(ORDFileReader, HeaderIsHandedOutAsOneValue) {
    Opened opened{OrdHeaderText()};
    const RecordingHeader header = opened.reader.Header();
    ASSERT_EQ(opened.reader.Close(), 0);
    EXPECT_EQ(header.numADChannels, 32U);
    EXPECT_EQ(header.samplingFrequency, 30000U);
    EXPECT_EQ(header.adMaxValue, 32767U);
    EXPECT_EQ(header.adBitVolts, 0.00000012);
    EXPECT_EQ(header.inputRange, 1000U);
    EXPECT_EQ(header.fileVersion, L"2.0");
    EXPECT_EQ(header.utcOffsetMicroseconds, 1600000000000000);
    EXPECT_EQ(header.sessionUuid, L"6f0e4c52-98d1-4a37-b2c6-1d5e7a90f384");
    EXPECT_EQ(header.acquisitionSystem, L"Unit3");
    EXPECT_TRUE(header.baseImuAvailable);
    EXPECT_TRUE(header.afeImuAvailable);
    EXPECT_TRUE(header.ultrasonicAvailable);
}

TEST(ORDFileReader, EveryMissingRequiredFieldIsNamed) {
    for (const std::string key :
         {"-NumADChannels", "-SamplingFrequency", "-ADMaxValue", "-ADBitVolts", "-InputRange",
          "-FileVersion", "-UTCOffsetMicroseconds"}) {
        const Opened opened(OrdHeaderText().Remove(key));
        EXPECT_EQ(opened.status, -1) << key;
        EXPECT_EQ(opened.reader.GetErrorMessage(),
                  L"Error retrieving header field " + std::wstring(key.begin(), key.end()));
    }
}

TEST(ORDFileReader, FieldsAfterAMissingOneKeepTheirValues) {
    const Opened opened(OrdHeaderText().Remove("-ADMaxValue"));
    EXPECT_EQ(opened.reader.SamplingFrequency(), 30000U);
    EXPECT_EQ(opened.reader.ADBitVolts(), 0.0);
    EXPECT_EQ(opened.reader.FileVersion(), L"1.0");
}

TEST(ORDFileReader, VersionTwoNeedsAUtcOffsetAndVersionOneDoesNot) {
    OrdHeaderText header;
    header.Remove("-UTCOffsetMicroseconds");
    EXPECT_EQ(Opened(header).status, -1);
    EXPECT_EQ(Opened(header.Set("-FileVersion", "1.0")).status, 0);
    EXPECT_EQ(Opened(header.Set("-FileVersion", "v2.0")).status, 0);
    EXPECT_EQ(Opened(header.Set("-FileVersion", "1.9")).status, 0);
    EXPECT_EQ(Opened(header.Set("-FileVersion", "1.10")).status, -1);
}

TEST(ORDFileReader, UtcOffsetOfAVersionOneFileIsNotRead) {
    const Opened opened(OrdHeaderText().Set("-FileVersion", "1.0"));
    EXPECT_EQ(opened.status, 0);
    EXPECT_EQ(opened.reader.UTCOffsetMicroseconds(), 0);
}

TEST(ORDFileReader, MissingSessionUuidLeavesItsMessage) {
    const Opened opened(OrdHeaderText().Remove("-SessionUUID"));
    EXPECT_EQ(opened.status, 0);
    EXPECT_EQ(opened.reader.SessionUUID(), L"");
    EXPECT_EQ(opened.reader.GetErrorMessage(), L"Error retrieving header field -SessionUUID");
}

TEST(ORDFileReader, FirstOfSeveralValuesAppliesToAllChannels) {
    const Opened opened(OrdHeaderText()
                            .Set("-ADBitVolts", "0.000000061 0.000000061")
                            .Set("-InputRange", "1000 2000"));
    EXPECT_EQ(opened.reader.ADBitVolts(), 0.000000061);
    EXPECT_EQ(opened.reader.InputRange(), 1000U);
}

TEST(ORDFileReader, FirstLineOfAKeyCounts) {
    const Opened opened(OrdHeaderText().AddLine("-ADMaxValue 5"));
    EXPECT_EQ(opened.reader.ADMaxValue(), 32767U);
}

TEST(ORDFileReader, SamplingFrequencyMayHaveAFraction) {
    EXPECT_EQ(
        Opened(OrdHeaderText().Set("-SamplingFrequency", "30000.0")).reader.SamplingFrequency(),
        30000U);
}

TEST(ORDFileReader, LowerCaseKeyIsFound) {
    const Opened opened(OrdHeaderText().Remove("-NumADChannels").AddLine("-numadchannels 4"));
    EXPECT_EQ(opened.status, 0);
    EXPECT_EQ(opened.reader.NumADChannels(), 4U);
}

TEST(ORDFileReader, ValueThatIsOnlyACommentIsAMissingField) {
    const Opened opened(OrdHeaderText().Set("-InputRange", "# none"));
    EXPECT_EQ(opened.status, -1);
    EXPECT_EQ(opened.reader.GetErrorMessage(), L"Error retrieving header field -InputRange");
}

TEST(ORDFileReader, UnreadableValueIsNoError) {
    const Opened opened(OrdHeaderText().Set("-InputRange", "many").Set("-ADBitVolts", "x"));
    EXPECT_EQ(opened.status, 0);
}

TEST(ORDFileReader, SessionUuidIsTheFirstWordOfItsToken) {
    EXPECT_EQ(Opened(OrdHeaderText().Set("-SessionUUID", "\"a b\"")).reader.SessionUUID(), L"a");
}

TEST(ORDFileReader, AcquisitionSystemIsTheSecondTokenWhole) {
    OrdHeaderText header;
    const auto system = [&](const char* value) {
        return Opened(header.Set("-AcquisitionSystem", value)).reader.AcquisitionSystem();
    };
    EXPECT_EQ(system("\"My System\" Unit2"), L"Unit2");
    EXPECT_EQ(system("X"), L"");
    EXPECT_EQ(system("One \"Two Three\" Four"), L"Two Three");
}

TEST(ORDFileReader, TwoValuesLeaveAnInertialFlagUnchanged) {
    const Opened two(
        OrdHeaderText().Set("-BaseIMUAvailable", "1 1").Set("-AfeIMUAvailable", "1 0"));
    EXPECT_FALSE(two.reader.BaseIMUAvailable());
    EXPECT_FALSE(two.reader.AfeIMUAvailable());
    EXPECT_TRUE(two.reader.UltrasonicAvailable());
    const Opened one(OrdHeaderText().Set("-BaseIMUAvailable", "1"));
    EXPECT_TRUE(one.reader.BaseIMUAvailable());
}

TEST(ORDFileReader, UltrasonicFlagTakesTheFirstOfAnyNumberOfValues) {
    EXPECT_TRUE(
        Opened(OrdHeaderText().Set("-UltrasonicAvailable", "1 0")).reader.UltrasonicAvailable());
    EXPECT_FALSE(
        Opened(OrdHeaderText().Set("-UltrasonicAvailable", "2")).reader.UltrasonicAvailable());
}

TEST(ORDFileReader, MissingAvailabilityKeyLeavesItsFlag) {
    const Opened opened(OrdHeaderText().Remove("-BaseIMUAvailable").Remove("-UltrasonicAvailable"));
    EXPECT_EQ(opened.status, 0);
    EXPECT_FALSE(opened.reader.BaseIMUAvailable());
    EXPECT_FALSE(opened.reader.UltrasonicAvailable());
    EXPECT_TRUE(opened.reader.AfeIMUAvailable());
}

TEST(ORDFileReader, OnlyTheIntegerOneMakesAFlagTrue) {
    for (const std::string value : {"0", "-1", "10", "0x1"}) {
        EXPECT_FALSE(
            Opened(OrdHeaderText().Set("-BaseIMUAvailable", value)).reader.BaseIMUAvailable())
            << value;
    }
    EXPECT_TRUE(Opened(OrdHeaderText().Set("-BaseIMUAvailable", "1.9")).reader.BaseIMUAvailable());
}

}  // namespace
}  // namespace stalwick::test
