// SPDX-License-Identifier: BSD-3-Clause

// What VerifyOutputs reports about whole sets of outputs, and about those that are not.

#include "survey/verify_outputs.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "survey/output_set.h"
#include "tests/support/case_step.h"
#include "tests/survey/output_set_in_memory.h"

namespace stalwick::test {
namespace {

constexpr std::uint64_t kPacketNs = 333'333;  // ten samples at 30 kHz

OrdHeaderText Header(bool timestamps, unsigned channels) {
    return timestamps ? Version2Header(channels) : Version1Header(channels);
}

// Packets with every block in any mixture.
std::vector<PacketPlan> MixedPackets(std::uint64_t seed, std::size_t count, bool timestamps,
                                     const std::vector<std::uint8_t>& codes) {
    std::mt19937_64 random(seed);
    std::vector<PacketPlan> plans;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t stamp = 1'000'000'007 + i * kPacketNs;
        plans.push_back(MakeRandomPacket(
            random, MakeRandomShape(random, codes[random() % codes.size()],
                                    timestamps ? std::optional(stamp) : std::nullopt)));
    }
    return plans;
}

TEST(VerifyOutputs, WholeSetsOfEveryVersionAndSwitchHaveNoFinding) {
    for (const bool timestamps : {false, true}) {
        for (std::uint8_t code = 0; code < 4; ++code) {
            const unsigned channels = ChannelCountOfCode(code);
            const std::string recording = BuildOrdFile(Header(timestamps, channels),
                                                       MixedPackets(code, 120, timestamps, {code}));
            for (unsigned switches = 0; switches < 32; switches += kCaseStep) {
                ReferenceConvertInput input;
                input.recording = recording;
                input.options = {(switches & 1U) != 0,
                                 (switches & 2U) != 0,
                                 (switches & 4U) != 0,
                                 (switches & 8U) != 0,
                                 true,
                                 (switches & 16U) != 0};
                OutputSetInMemory set(input);
                const VerifyReport alone = set.Verify();
                EXPECT_TRUE(alone.IsWhole()) << switches << Findings(alone);
                const VerifyReport compared = set.Compare();
                EXPECT_TRUE(compared.IsWhole()) << switches << Findings(compared);
            }
        }
    }
}

TEST(VerifyOutputs, WholeSetsOfPacketsOfAnyWidthHaveNoFinding) {
    for (const bool timestamps : {false, true}) {
        for (const unsigned announced : {16U, 32U, 40U, 100U, 256U}) {
            OutputSetInMemory set(
                EveryOutput(BuildOrdFile(Header(timestamps, announced),
                                         MixedPackets(announced, 300, timestamps, {0, 1, 2, 3}))));
            const VerifyReport alone = set.Verify();
            EXPECT_TRUE(alone.IsWhole()) << announced << Findings(alone);
            const VerifyReport compared = set.Compare();
            EXPECT_TRUE(compared.IsWhole()) << announced << Findings(compared);
        }
    }
}

TEST(VerifyOutputs, WholeSetsOfOddSamplingFrequenciesHaveNoFinding) {
    for (const char* frequency : {"1", "7", "24414", "1234567", "4294967295"}) {
        OutputSetInMemory set(
            EveryOutput(BuildOrdFile(Header(false, 32).Set("-SamplingFrequency", frequency),
                                     MixedPackets(3, 200, false, {0}))));
        const VerifyReport alone = set.Verify();
        EXPECT_TRUE(alone.IsWhole()) << frequency << Findings(alone);
        const VerifyReport compared = set.Compare();
        EXPECT_TRUE(compared.IsWhole()) << frequency << Findings(compared);
    }
}

TEST(VerifyOutputs, CanceledSetIsWholeButLessThanItsRecordingGives) {
    ReferenceConvertInput input =
        EveryOutput(BuildOrdFile(Header(true, 32), MixedPackets(1, 400, true, {0})));
    input.spansUntilCancel = 2;
    OutputSetInMemory set(input);
    EXPECT_TRUE(set.Verify().IsWhole()) << Findings(set.Verify());
    const VerifyReport compared = set.Compare();
    EXPECT_FALSE(compared.IsWhole());
    EXPECT_NE(Findings(compared).find("the recording gives"), std::string::npos);

    input.spansUntilCancel = 0;
    OutputSetInMemory empty(input);
    EXPECT_TRUE(empty.Verify().IsWhole()) << Findings(empty.Verify());
}

// One recording, converted twice, the second time with the raw data file.
TEST(VerifyOutputs, EachConversionIntoADirectoryIsASeparateSet) {
    ReferenceConvertInput input =
        EveryOutput(BuildOrdFile(Header(true, 32), MixedPackets(1, 200, true, {0})));
    input.options.raw = false;
    input.clockText = "2026/11/21 09:59:59";
    OutputSetInMemory set(input);
    input.options.raw = true;
    input.clockText = "2026/11/21 10:00:03";
    set.Add(input);
    VerifyReport report = set.Verify();
    EXPECT_TRUE(report.IsWhole()) << Findings(report);
    ASSERT_EQ(report.sets.size(), 2U);
    EXPECT_EQ(report.sets[0].names.back(), L"Events.vev");
    EXPECT_EQ(report.sets[1].names.front(), L"CSC1_01.vcs");
    EXPECT_EQ(report.sets[1].names.back(), L"RawData.vrd");
    EXPECT_TRUE(set.Compare().IsWhole()) << Findings(set.Compare());

    set.outputs.at("CSC3_01.vcs").resize(16384 + 1044);
    report = set.Verify();
    EXPECT_TRUE(report.sets[0].findings.empty()) << Findings(report);
    EXPECT_FALSE(report.sets[1].findings.empty());
}

// Another recording with the same name: its channels beyond those of the first have no number.
TEST(VerifyOutputs, FilesOfTwoSessionsAreTwoSets) {
    OutputSetInMemory set(
        EveryOutput(BuildOrdFile(Header(true, 32), MixedPackets(1, 200, true, {0}))));
    set.Add(EveryOutput(BuildOrdFile(Header(true, 64).Set("-SessionUUID", "another"),
                                     MixedPackets(2, 200, true, {1}))));
    ASSERT_TRUE(set.outputs.contains("CSC33.vcs"));
    const VerifyReport report = set.Verify();
    EXPECT_EQ(report.sets.size(), 2U);
    EXPECT_TRUE(report.IsWhole()) << Findings(report);
}

TEST(OutputSet, HeaderTimesCountSecondsAndRefuseAnythingElse) {
    const auto first = ReadHeaderTime(L"2021/03/04 09:05:07");
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(ReadHeaderTime(L"2021/03/04 10:00:00"), *first + 54 * 60 + 53);
    EXPECT_GT(ReadHeaderTime(L"2021/04/01 00:00:00"), ReadHeaderTime(L"2021/03/31 23:59:59"));
    for (const wchar_t* text :
         {L"", L"2021/13/04 09:05:07", L"2021/03/32 09:05:07", L"2021/03/04 24:05:07",
          L"2021/03/04 09:60:07", L"2021/03/04 09:05:61", L"2021-03-04 09:05:07",
          L"2021/03/04 09:05:0", L"2021/03/04 09:05:070"}) {
        EXPECT_FALSE(ReadHeaderTime(text).has_value());
    }
}

TEST(VerifyOutputs, OtherFilesAreLeftAlone) {
    OutputSetInMemory set(
        EveryOutput(BuildOrdFile(Header(true, 32), MixedPackets(1, 60, true, {0}))));
    for (const char* name : {"notes.txt", "CSC0.vcs", "CSC01.vcs", "CSC257.vcs", "CSC1_1.vcs",
                             "Base_XX.vcs", "Events.vcs", "RawData.vev", "csc1.vcs", ".vcs"}) {
        set.outputs[name] = "something";
    }
    const VerifyReport report = set.Verify();
    EXPECT_TRUE(report.IsWhole()) << Findings(report);
    set.outputs = {{"notes.txt", "x"}};
    EXPECT_NE(set.Verify().error, L"");
}

TEST(VerifyOutputs, MissingFileOfASetIsFound) {
    const std::string recording = BuildOrdFile(Header(true, 32), MixedPackets(1, 60, true, {0}));
    for (const char* name : {"CSC1.vcs", "CSC32.vcs", "Base_AVX.vcs", "AFE_MZ.vcs", "Events.vev"}) {
        OutputSetInMemory set(EveryOutput(recording));
        set.outputs.erase(name);
        for (const VerifyReport& report : {set.Verify(), set.Compare()}) {
            EXPECT_NE(Findings(report).find(std::string(name) + ": it is missing"),
                      std::string::npos)
                << name << Findings(report);
        }
    }
}

TEST(VerifyOutputs, GapsAreListedAndAreNoFinding) {
    std::vector<PacketPlan> plans;
    std::mt19937_64 random(1);
    RandomPacketShape shape;
    for (std::uint64_t i = 0; i < 300; ++i) {
        const std::uint64_t lost = (i >= 100 ? 1U : 0U) + (i >= 250 ? 3000U : 0U);
        shape.hardwareTimestamp = 1'000'000'000 + (i + lost) * kPacketNs;
        plans.push_back(MakeRandomPacket(random, shape));
    }
    for (const bool channels : {true, false}) {
        ReferenceConvertInput input = EveryOutput(BuildOrdFile(Version2Header(32), plans));
        input.options.csc = channels;
        const VerifyReport report = OutputSetInMemory(input).Verify();
        EXPECT_TRUE(report.IsWhole()) << Findings(report);
        const auto& gaps = report.sets.front().gaps;
        ASSERT_EQ(gaps.size(), 2U) << channels;
        EXPECT_EQ(gaps[0].missingSamples, 10U);
        EXPECT_EQ(gaps[1].missingSamples, 30'000U);
        EXPECT_NEAR(gaps[1].seconds, 1.0, 1e-3);
        const std::uint64_t record = channels ? 2 : 1000;
        EXPECT_EQ(gaps[0].record, record);
        EXPECT_EQ(gaps[0].byte, 16384 + record * (channels ? 1044 : 200));
    }
}

TEST(VerifyOutputs, NoGapIsInvented) {
    for (const unsigned rate : {1000U, 24'414U, 30'000U, 32'000U, 300'000U}) {
        for (const double drift : {-50e-6, 0.0, 50e-6}) {
            std::vector<PacketPlan> plans;
            std::mt19937_64 random(rate);
            RandomPacketShape shape;
            for (std::size_t i = 0; i < 400; ++i) {
                const double ns = static_cast<double>(i) * 1e10 / rate * (1.0 + drift);
                shape.hardwareTimestamp = 1'000'000'000 + static_cast<std::uint64_t>(ns);
                plans.push_back(MakeRandomPacket(random, shape));
            }
            for (const bool channels : {true, false}) {
                ReferenceConvertInput input = EveryOutput(BuildOrdFile(
                    Version2Header(32).Set("-SamplingFrequency", std::to_string(rate)), plans));
                input.options.csc = channels;
                const VerifyReport report = OutputSetInMemory(input).Verify();
                EXPECT_TRUE(report.IsWhole()) << rate << Findings(report);
                EXPECT_EQ(report.sets.front().gapCount, 0U) << rate << ' ' << drift;
            }
        }
    }
}

TEST(VerifyOutputs, TimesThatGoBackAreFoundUnlessTheRecordingHasThem) {
    std::vector<PacketPlan> plans = MixedPackets(1, 200, true, {0});
    for (std::size_t i = 120; i < plans.size(); ++i) *plans[i].hardwareTimestamp -= 30'000'000;
    OutputSetInMemory set(EveryOutput(BuildOrdFile(Header(true, 32), plans)));
    const VerifyReport report = set.Verify();
    EXPECT_NE(Findings(report).find("microseconds earlier than that of the previous record"),
              std::string::npos)
        << Findings(report);
    EXPECT_TRUE(set.Compare().IsWhole()) << Findings(set.Compare());
}

// Events and raw records do go back there: a double can no longer represent their microseconds.
TEST(VerifyOutputs, ChannelTimesThatPassTheEndOf64BitsDoNotGoBack) {
    std::vector<PacketPlan> plans = MixedPackets(1, 200, true, {0});
    OutputSetInMemory set(EveryOutput(
        BuildOrdFile(Header(true, 32).Set("-UTCOffsetMicroseconds", "-1030000"), plans)));
    EXPECT_TRUE(set.Compare().IsWhole()) << Findings(set.Compare());
    EXPECT_EQ(Findings(set.Verify()).find(".vcs"), std::string::npos) << Findings(set.Verify());
}

TEST(VerifyOutputs, TimestampsOfZeroCountAsNoneForChannels) {
    std::vector<PacketPlan> plans = MixedPackets(1, 200, true, {0});
    for (PacketPlan& plan : plans) plan.hardwareTimestamp = 0;
    OutputSetInMemory set(EveryOutput(BuildOrdFile(Header(true, 32), plans)));
    EXPECT_TRUE(set.Compare().IsWhole()) << Findings(set.Compare());
}

TEST(VerifyOutputs, RawDataFileThatIsCutInsideAPacketIsFoundByItself) {
    ReferenceConvertInput input =
        EveryOutput(BuildOrdFile(Header(true, 32), MixedPackets(1, 60, true, {0})));
    input.options.csc = false;
    OutputSetInMemory set(input);
    set.outputs.at("RawData.vrd").resize(16384 + 13 * 200);
    EXPECT_NE(Findings(set.Verify()).find("inside the ten records of a packet"), std::string::npos)
        << Findings(set.Verify());
}

TEST(VerifyOutputs, RawDataFileOfAnotherChannelCountIsFoundAgainstTheRecording) {
    OutputSetInMemory set(
        EveryOutput(BuildOrdFile(Header(true, 32), MixedPackets(1, 60, true, {0}))));
    std::string& bytes = set.outputs.at("RawData.vrd");
    const std::string line = "-NumADChannels 32";
    bytes[bytes.find(line) + line.size() - 1] = '3';
    EXPECT_NE(Findings(set.Compare()).find("its -NumADChannels has \"33\""), std::string::npos)
        << Findings(set.Compare());
}

TEST(VerifyOutputs, OutputsOfAnotherRecordingDiffer) {
    OutputSetInMemory set(
        EveryOutput(BuildOrdFile(Header(true, 32), MixedPackets(1, 60, true, {0}))));
    set.Recording() = BuildOrdFile(Header(true, 32), MixedPackets(2, 60, true, {0}));
    const VerifyReport report = set.Compare();
    ASSERT_EQ(report.sets.size(), 1U);
    EXPECT_GT(report.sets.front().findingCount, 30U);
    // A few are listed for each file.
    std::uint64_t all = report.sets.front().findings.size();
    for (const auto& file : report.sets.front().unlisted) all += file.second;
    EXPECT_EQ(all, report.sets.front().findingCount);
    EXPECT_EQ(report.sets.front().unlisted.count(OutputSetInMemory::PathOf(L"RawData.vrd")), 1U);
}

TEST(VerifyOutputs, RecordingThatCannotBeReadIsAnError) {
    OutputSetInMemory set(
        EveryOutput(BuildOrdFile(Header(true, 32), MixedPackets(1, 20, true, {0}))));
    set.Recording() = "no recording";
    EXPECT_NE(set.Compare().recordingError, L"");
    EXPECT_FALSE(set.Compare().IsWhole());
    set.Recording() = BuildOrdFile(Header(true, 32).Set("-SamplingFrequency", "0"), {});
    EXPECT_NE(set.Compare().recordingError, L"");
}

}  // namespace
}  // namespace stalwick::test
