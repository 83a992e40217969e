// SPDX-License-Identifier: BSD-3-Clause

// The command's report on each recording and on all of them, and the matching exit status.

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/cli/small_recording.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

// Switched off in the middle of its last packet.
std::string CutRecording() {
    const std::string whole = SmallRecording();
    return whole.substr(0, whole.size() - 31);
}

// Bytes at its end that do not begin a packet.
std::string DamagedRecording() {
    return SmallRecording() + std::string(300, '\xEE');
}

class CommandAccount : public testing::Test {
  protected:
    std::string Put(const std::wstring& name, const std::string& recording) const {
        WriteFile(directory_.Path(name), recording);
        return ToUtf8(name);
    }
    // Runs in the directory of the recordings, so that their names are short.
    CommandResult Run(const std::vector<std::string>& arguments, CommandSetup setup = {}) const {
        setup.workingDirectory = directory_.Path();
        return RunCommand(arguments, setup);
    }
    std::uint64_t BytesIn(const std::wstring& name) const {
        std::uint64_t bytes = 0;
        for (const auto& file : FilesIn(directory_.Path(name))) bytes += file.second.size();
        return bytes;
    }

    TempDirectory directory_;
};

bool BeginsWith(const std::string& text, const std::string& beginning) {
    return text.rfind(beginning, 0) == 0;
}

TEST_F(CommandAccount, LineOfAWholeRecordingSaysWhatWasWrittenWhere) {
    Put(L"rat01.ord", SmallRecording());
    const CommandResult result = Run({"-o", "out", "rat01.ord"});
    EXPECT_EQ(result.exitStatus, 0);
    const std::uint64_t kilobyteTenths = BytesIn(L"out/rat01") / 100;
    EXPECT_EQ(result.error, "rat01.ord: 0.0 s, 32 channels -> out/rat01 (33 files, " +
                                std::to_string(kilobyteTenths / 10) + "." +
                                std::to_string(kilobyteTenths % 10) + " kB)\n");
    EXPECT_TRUE(
        BeginsWith(Run({"rat01.ord"}).error, "rat01.ord: 0.0 s, 32 channels -> rat01 (33 files, "));
}

TEST_F(CommandAccount, LossInARecordingIsStatusThree) {
    Put(L"rat02.ord", DamagedRecording());
    for (const bool quiet : {false, true}) {
        const CommandResult result = Run(quiet ? std::vector<std::string>{"-q", "rat02.ord"}
                                               : std::vector{std::string("rat02.ord")});
        EXPECT_EQ(result.exitStatus, 3);
        EXPECT_EQ(result.output, "Processing complete\n");
        EXPECT_TRUE(BeginsWith(result.error, "rat02.ord: 0.0 s, 32 channels -> rat02 (33 files, "));
        EXPECT_NE(result.error.find("), with losses: damaged at byte "), std::string::npos)
            << result.error;
        EXPECT_EQ(LineCount(result.error), 1) << result.error;
    }
}

TEST_F(CommandAccount, VersionThatThePacketsContradictIsStatusThree) {
    RandomRecordingShape shape;
    shape.packetCount = 60;
    Put(L"rat.ord", BuildOrdFile(Version1Header(32), MakeRandomPackets(72, shape)));
    const CommandResult result = Run({"-q", "rat.ord"});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_NE(result.error.find("its packets contradict its header's -FileVersion 1.0"),
              std::string::npos)
        << result.error;
}

TEST_F(CommandAccount, PacketsLeftOutAfterAWrongByteAreStatusThree) {
    RandomRecordingShape shape;
    shape.packetCount = 60;
    const std::vector<PacketPlan> packets = MakeRandomPackets(73, shape);
    const std::size_t last = EncodePacket(packets.back()).size();
    std::string recording = BuildOrdFile(Version2Header(32), packets);
    recording[recording.size() - last] = '\x05';  // where the last packet should begin
    Put(L"rat.ord", recording);
    const CommandResult result = Run({"-q", "rat.ord"});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_NE(result.error.find(std::to_string(last) + " trailing bytes from byte " +
                                std::to_string(recording.size() - last) + " on were left out"),
              std::string::npos)
        << result.error;
}

TEST_F(CommandAccount, PacketsOfSensorsThatTheHeaderLacksAreStatusThree) {
    RandomRecordingShape shape;
    shape.packetCount = 60;
    shape.packet.baseImu = true;
    Put(L"rat.ord", BuildOrdFile(Version2Header(32).Set("-BaseIMUAvailable", "0"),
                                 MakeRandomPackets(74, shape)));
    EXPECT_EQ(Run({"-q", "--base-imu", "rat.ord"}).exitStatus, 3);
    EXPECT_EQ(Run({"-q", "rat.ord"}).exitStatus, 0);
}

TEST_F(CommandAccount, RecordingThatEndsInsideAPacketIsWholeWithANote) {
    Put(L"cut.ord", CutRecording());
    const CommandResult result = Run({"cut.ord"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "Processing complete\n");
    EXPECT_NE(result.error.find("); it ends inside a packet: "), std::string::npos) << result.error;
    EXPECT_NE(result.error.find(" trailing bytes"), std::string::npos) << result.error;
    EXPECT_EQ(LineCount(result.error), 1);
    EXPECT_EQ(Run({"-q", "cut.ord"}).error, "");
}

TEST_F(CommandAccount, WorstStatusOfAllRecordingsWins) {
    const std::string whole = Put(L"whole.ord", SmallRecording());
    const std::string damaged = Put(L"damaged.ord", DamagedRecording());
    const std::string empty = Put(L"empty.ord", "");
    EXPECT_EQ(Run({whole, damaged}).exitStatus, 3);
    EXPECT_EQ(Run({damaged, whole}).exitStatus, 3);
    EXPECT_EQ(Run({"-k", damaged, empty, whole}).exitStatus, 1);
    EXPECT_EQ(Run({"-k", empty, damaged}).exitStatus, 1);
}

TEST_F(CommandAccount, RecapCountsAllAndNamesWhatIsNotWhole) {
    const std::string whole = Put(L"whole.ord", SmallRecording());
    const std::string cut = Put(L"cut.ord", CutRecording());
    const std::string damaged = Put(L"damaged.ord", DamagedRecording());
    const std::string empty = Put(L"empty.ord", "");
    const CommandResult result = Run({"-k", whole, empty, damaged, "none.ord", cut});
    const std::string recap =
        "5 recordings: 2 converted, 1 with losses, 2 failed, 0 canceled\n"
        "  with losses: damaged.ord\n"
        "  failed: empty.ord\n"
        "  failed: none.ord\n";
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(LineCount(result.error), 5 + 4) << result.error;
    EXPECT_EQ(
        result.error.substr(result.error.size() - std::min(result.error.size(), recap.size())),
        recap);
    const CommandResult quiet = Run({"-qk", whole, empty, damaged, "none.ord", cut});
    EXPECT_EQ(LineCount(quiet.error), 3 + 4) << quiet.error;
    EXPECT_EQ(quiet.error.find("whole.ord"), std::string::npos);
    EXPECT_EQ(quiet.error.find("cut.ord"), std::string::npos);
}

TEST_F(CommandAccount, RecordingsThatWereNotBegunAreNamed) {
    const std::string empty = Put(L"empty.ord", "");
    const std::string whole = Put(L"whole.ord", SmallRecording());
    const CommandResult result = Run({"-j1", empty, whole});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.error.find("2 recordings: 0 converted, 0 with losses, 1 failed, 0 canceled, 1 "
                                "not begun\n  failed: empty.ord\n  not begun: whole.ord\n"),
              std::string::npos)
        << result.error;
}

TEST_F(CommandAccount, ManyWholeRecordingsAreALineEachAndARecap) {
    const std::string first = Put(L"a.ord", SmallRecording(1));
    const std::string second = Put(L"b.ord", SmallRecording(2));
    const CommandResult result = Run({"-j2", first, second});
    EXPECT_EQ(LineCount(result.error), 3) << result.error;
    EXPECT_NE(result.error.find("2 recordings: 2 converted, 0 with losses, 0 failed, 0 canceled\n"),
              std::string::npos)
        << result.error;
    EXPECT_EQ(Run({"-q", first, second}).error, "");
}

TEST_F(CommandAccount, FailureSaysHowFarItCameAndWhy) {
    RandomRecordingShape shape;
    shape.packetCount = 12000;  // more than one block of records per file
    const std::string big =
        Put(L"big.ord", BuildOrdFile(Version2Header(32), MakeRandomPackets(5, shape)));
    CommandSetup setup;
    setup.largestFileBytes = 100000;
    const CommandResult result = Run({"-q", big}, setup);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(BeginsWith(result.error, "big.ord: failed after reading 1.7 s -> big (33 files, "))
        << result.error.substr(0, 200);
    EXPECT_NE(result.error.find("): cannot write "), std::string::npos);
}

TEST_F(CommandAccount, FailureThatMadeNoOutputSaysWhy) {
    Put(L"empty.ord", "");
    EXPECT_TRUE(BeginsWith(Run({"-q", "empty.ord"}).error, "empty.ord: not an .ord recording ("));
    EXPECT_TRUE(BeginsWith(Run({"-q", "none.ord"}).error,
                           "none.ord: not converted: No such file or directory; "));
}

}  // namespace
}  // namespace stalwick::test
