// SPDX-License-Identifier: BSD-3-Clause
#include "engine/converted_outputs.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kPackets = 700;  // 7,000 samples per channel: 14 records, the last of 344

std::string Recording(std::size_t packets = kPackets, std::uint64_t seed = 5) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, true, true, true, true, true, 40, {}, true};
    shape.packetCount = packets;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(seed, shape));
}

std::string RecordingOf(std::uint8_t code, unsigned headerChannels) {
    RandomRecordingShape shape;
    shape.packet.channelCountCode = code;
    shape.packetCount = 60;
    return BuildOrdFile(Version2Header(headerChannels), MakeRandomPackets(3, shape));
}

class ConvertedOutputsTest : public testing::Test {
  protected:
    ConvertedOutputsTest() { MakeDirectory(Directory()); }

    std::wstring Directory() const { return directory_.Path(L"rec"); }
    std::wstring Output(const std::wstring& name) const {
        return Directory() + kPathSeparator + name;
    }

    // Writes the recording and the outputs that the reference makes from `converted`.
    void Put(const std::string& recording, const std::string& converted,
             const ReferenceConvertOptions& options = AllOutputs()) {
        PutRecording(directory_, recording);
        ReferenceConvertInput input;
        input.recording = converted;
        input.options = options;
        input.fileName = "rec.ord";
        input.clockText = "2021/03/04 09:05:07";
        input.takenNames = NamesIn(Directory());
        for (const auto& [name, bytes] : ReferenceConvert(input).files) {
            WriteFile(Output({name.begin(), name.end()}), bytes);
        }
    }

    void Clear() const {
        for (const auto& [name, bytes] : FilesIn(Directory())) {
            RemoveFile(Output({name.begin(), name.end()}));
        }
    }

    ConvertedOutputs Find(const WantedOutputs& wanted = {{1, 1, 1, 1}, true, true}) const {
        const std::atomic<std::uint8_t> notCanceled{0};
        return FindConvertedOutputs(
            {directory_.Path(L"in") + kPathSeparator + L"rec.ord", Directory(), wanted},
            notCanceled);
    }
    // The reason why an output is not whole, without its directory.
    std::wstring Reason() const {
        const ConvertedOutputs found = Find();
        EXPECT_FALSE(found.whole);
        const std::wstring directory = Directory() + kPathSeparator;
        return found.reason.starts_with(directory) ? found.reason.substr(directory.size())
                                                   : found.reason;
    }

    TempDirectory directory_;
};

TEST_F(ConvertedOutputsTest, WholeSetIsFound) {
    Put(Recording(), Recording());
    const ConvertedOutputs found = Find();
    EXPECT_EQ(found.reason, L"");
    EXPECT_TRUE(found.whole);
    EXPECT_EQ(found.files, 53U);
    std::uint64_t bytes = 0;
    for (const auto& [name, content] : FilesIn(Directory())) bytes += content.size();
    EXPECT_EQ(found.bytes, bytes);
}

TEST_F(ConvertedOutputsTest, WholeSetOfEveryPacketWidthIsFound) {
    for (std::uint8_t code = 0; code < 4; ++code) {
        const unsigned channels = ChannelCountOfCode(code);
        Clear();
        const std::string recording = RecordingOf(code, channels);
        Put(recording, recording);
        EXPECT_EQ(Find().reason, L"") << channels;
    }
}

TEST_F(ConvertedOutputsTest, ChannelsThatNoPacketCarriesAreWholeWithoutRecords) {
    const std::string recording = RecordingOf(0, 64);
    Put(recording, recording);
    EXPECT_EQ(Find().reason, L"");
}

TEST_F(ConvertedOutputsTest, RecordingWithoutPacketsIsWholeWithoutRecords) {
    Put(Recording(0), Recording(0));
    EXPECT_EQ(Find().reason, L"");
}

TEST_F(ConvertedOutputsTest, OutputsThatAreNotAskedForNeedNotBeThere) {
    Put(Recording(), Recording(), {true, false, false, false, true, false});
    EXPECT_TRUE(Find({{1, 0, 0, 0}, true, false}).whole);
    EXPECT_EQ(Find({{1, 0, 0, 0}, true, false}).files, 33U);
    EXPECT_FALSE(Find({{1, 0, 0, 0}, true, true}).whole);
    EXPECT_FALSE(Find({{1, 0, 0, 1}, true, false}).whole);
}

TEST_F(ConvertedOutputsTest, EachMissingOutputIsNamed) {
    for (const wchar_t* name : {L"CSC1.vcs", L"CSC32.vcs", L"Base_LAX.vcs", L"AFE_MZ.vcs",
                                L"Ultrasonic.vcs", L"Events.vev", L"RawData.vrd"}) {
        Put(Recording(), Recording());
        RemoveFile(Output(name));
        EXPECT_EQ(Reason(), std::wstring(name) + L" is missing");
        Clear();
    }
}

TEST_F(ConvertedOutputsTest, FileThatWasNotClosedIsNotWhole) {
    Put(Recording(), Recording());
    std::string bytes = ReadFile(Output(L"CSC7.vcs"));
    const std::string closed = "-TimeClosed 2021/03/04 09:05:07\r\n";
    std::string text = bytes.substr(0, bytes.find('\0'));
    text.replace(text.find(closed), closed.size(), "-TimeClosed File was not closed properly\r\n");
    text.resize(16384, '\0');
    WriteFile(Output(L"CSC7.vcs"), text + bytes.substr(16384));
    EXPECT_EQ(Reason(), L"CSC7.vcs was not closed");
}

TEST_F(ConvertedOutputsTest, CanceledSetIsNotWholeAlthoughItIsClosed) {
    Put(Recording(), Recording(kPackets - 1));
    EXPECT_EQ(Reason(),
              L"CSC1.vcs has 334 samples in its last record, but the recording gives 344");
    Clear();
    Put(Recording(), Recording(100));
    EXPECT_EQ(Reason(), L"CSC1.vcs has 2 records, but the recording gives 14");
}

TEST_F(ConvertedOutputsTest, EachKindOfOutputMustHaveAllItsRecords) {
    const std::pair<const wchar_t*, std::size_t> cuts[] = {
        {L"CSC32.vcs", 1044},      {L"Base_LAX.vcs", 1044}, {L"AFE_AVY.vcs", 1044},
        {L"Ultrasonic.vcs", 1044}, {L"Events.vev", 184},    {L"RawData.vrd", 200}};
    Put(Recording(), Recording());
    for (const auto& [name, cut] : cuts) {
        const std::string bytes = ReadFile(Output(name));
        WriteFile(Output(name), bytes.substr(0, bytes.size() - cut));
        EXPECT_NE(Reason().find(L", but the recording gives "), std::wstring::npos) << cut;
        WriteFile(Output(name), bytes + bytes.substr(bytes.size() - cut));
        EXPECT_NE(Reason().find(L", but the recording gives "), std::wstring::npos) << cut;
        WriteFile(Output(name), bytes + "x");
        EXPECT_FALSE(Find().whole);
        WriteFile(Output(name), bytes);
    }
    EXPECT_TRUE(Find().whole);
}

TEST_F(ConvertedOutputsTest, SetOfAnotherSessionIsNotThisRecordings) {
    RandomRecordingShape shape;
    shape.packetCount = 60;
    const auto packets = MakeRandomPackets(3, shape);
    const auto recording = [&](const char* session) {
        return BuildOrdFile(Version2Header(32).Set("-SessionUUID", session), packets);
    };
    Put(recording("one"), recording("another"));
    EXPECT_EQ(Reason(), L"CSC1.vcs belongs to another session");
}

TEST_F(ConvertedOutputsTest, RecordingWithoutASessionIsNeverSkipped) {
    const std::string recording = BuildOrdFile(Version2Header(32).Remove("-SessionUUID"), {});
    Put(recording, recording);
    EXPECT_EQ(Reason(), L"the recording has no -SessionUUID");
}

TEST_F(ConvertedOutputsTest, FilesOfChangedNamesAreNotWhole) {
    Put(Recording(), Recording());
    const std::string first = ReadFile(Output(L"CSC1.vcs"));
    WriteFile(Output(L"CSC1.vcs"), ReadFile(Output(L"CSC2.vcs")));
    WriteFile(Output(L"CSC2.vcs"), first);
    EXPECT_EQ(Reason(), L"CSC1.vcs belongs to another channel");
}

TEST_F(ConvertedOutputsTest, LaterNamesOfAWholeSetCountToo) {
    Put(Recording(), Recording(100));  // canceled
    Put(Recording(), Recording());     // CSC1_01.vcs ...
    ASSERT_TRUE(Exists(Output(L"CSC1_01.vcs")));
    EXPECT_EQ(Find().reason, L"");
    EXPECT_EQ(Find().files, 53U);
}

TEST_F(ConvertedOutputsTest, SetOfTwoConversionsIsWholeIfEachOutputIs) {
    Put(Recording(), Recording(), {true, false, false, false, true, false});
    Put(Recording(), Recording());  // RawData.vrd next to CSC1_01.vcs
    RemoveFile(Output(L"CSC1.vcs"));
    EXPECT_EQ(Find().reason, L"");
}

TEST_F(ConvertedOutputsTest, DamagedRecordingIsNeverSkipped) {
    const std::string damaged = Recording() + std::string(40, '\x7F');
    Put(damaged, damaged);
    EXPECT_EQ(Reason(), L"the recording is damaged at byte " + std::to_wstring(Recording().size()));
}

TEST_F(ConvertedOutputsTest, RecordingThatWasSwitchedOffInsideAPacketIsWhole) {
    const std::string whole = Recording();
    const std::string cut = whole.substr(0, whole.size() - 1);
    Put(cut, cut);
    EXPECT_EQ(Find().reason, L"");
}

TEST_F(ConvertedOutputsTest, RecordingWithMoreChannelsThanItsHeaderIsNeverSkipped) {
    const std::string recording = RecordingOf(1, 32);
    Put(recording, recording);
    EXPECT_EQ(Reason(), L"the recording has packets of more channels than its header announces");
}

TEST_F(ConvertedOutputsTest, RecordingWithSensorsThatItsHeaderLacksIsNeverSkipped) {
    RandomRecordingShape shape;
    shape.packetCount = 60;
    shape.packet.afeImu = true;
    const std::string recording =
        BuildOrdFile(Version2Header(32).Set("-AfeIMUAvailable", "0"), MakeRandomPackets(3, shape));
    Put(recording, recording);
    EXPECT_EQ(Reason(),
              L"the recording has packets with sensors that its header does not announce");
    EXPECT_EQ(Find({{1, 1, 0, 1}, true, true}).reason, L"");
}

TEST_F(ConvertedOutputsTest, ChannelsThatAMaskLeavesOutNeedNoOutputs) {
    RandomRecordingShape shape;
    shape.packetCount = 60;
    auto packets = MakeRandomPackets(3, shape);
    for (PacketPlan& packet : packets) packet.channelMask = MakeChannelMask(32, {0, 5, 19});
    const std::string recording = BuildOrdFile(Version2Header(20), packets);
    Put(recording, recording);
    EXPECT_EQ(Find().reason, L"");
    EXPECT_EQ(Find().files, 20U + 9 + 9 + 1 + 2);
}

TEST_F(ConvertedOutputsTest, RecordingThatContradictsItsVersionIsNeverSkipped) {
    RandomRecordingShape shape;
    shape.packetCount = 60;
    const std::string recording =
        BuildOrdFile(Version2Header(32).Set("-FileVersion", "1.0"), MakeRandomPackets(3, shape));
    Put(recording, recording);
    EXPECT_FALSE(Find().whole);
}

TEST_F(ConvertedOutputsTest, CancelEndsTheCheck) {
    Put(Recording(), Recording());
    const std::atomic<std::uint8_t> canceled{1};
    const ConvertedOutputs found =
        FindConvertedOutputs({directory_.Path(L"in") + kPathSeparator + L"rec.ord",
                              Directory(),
                              {{1, 1, 1, 1}, true, true}},
                             canceled);
    EXPECT_FALSE(found.whole);
}

TEST_F(ConvertedOutputsTest, WithoutARecordingOrADirectoryNothingIsWhole) {
    EXPECT_FALSE(Find().whole);
    PutRecording(directory_, Recording());
    EXPECT_EQ(Reason(), L"CSC1.vcs is missing");
}

}  // namespace
}  // namespace stalwick::test
