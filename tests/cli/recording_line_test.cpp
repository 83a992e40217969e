// SPDX-License-Identifier: BSD-3-Clause
#include "cli/recording_line.h"

#include <gtest/gtest.h>

#include "cli/exit_status.h"
#include "cli/recap.h"

namespace stalwick {
namespace {

using Cause = ConversionDetail::Cause;
using Kind = ConversionDetail::Kind;

const PlannedRecording kRecording{L"rat.ord", L"/data/rat.ord", L"/data/out", L"out/rat"};

RecordingOutcome Whole() {
    RecordingOutcome outcome;
    outcome.converted = true;
    outcome.status = L"Processing complete";
    outcome.account.adChannels = 64;
    outcome.account.packets = 1800000;
    outcome.account.durationSeconds = 600;
    outcome.account.inputBytes = 1000;
    outcome.account.inputBytesRead = 1000;
    outcome.account.outputFiles = 67;
    outcome.account.outputBytes = 2'345'678'901;
    return outcome;
}

RecordingOutcome Canceled() {
    RecordingOutcome outcome = Whole();
    outcome.status = L"Data processing canceled.";
    outcome.account.canceled = true;
    outcome.account.durationSeconds = 200;
    outcome.account.inputBytesRead = 349;
    return outcome;
}

RecordingOutcome With(RecordingOutcome outcome, const ConversionDetail& detail) {
    outcome.account.details.push_back(detail);
    return outcome;
}

const ConversionDetail kNote{Kind::kNote, L"/data/rat.ord: something worth knowing"};
const ConversionDetail kLoss{Kind::kLoss, L"/data/rat.ord: damaged at byte 7"};
const ConversionDetail kIncomplete{Kind::kIncomplete, L"cannot write /data/out/rat/CSC1.vcs: full"};

using Lines = std::vector<std::wstring>;

TEST(RecordingLine, WholeRecordingIsOneLine) {
    EXPECT_EQ(DescribeRecording(kRecording, Whole(), false),
              Lines{L"rat.ord: 10 min 0.0 s, 64 channels -> out/rat (67 files, 2.3 GB)"});
    EXPECT_EQ(DescribeRecording(kRecording, Whole(), true), Lines{});
}

TEST(RecordingLine, CanceledRecordingSaysHowFarItCame) {
    for (const bool quiet : {false, true}) {
        EXPECT_EQ(DescribeRecording(kRecording, Canceled(), quiet),
                  Lines{L"rat.ord: canceled after 3 min 20.0 s (34 %) -> out/rat (67 files, 2.3 "
                        L"GB)"});
    }
}

TEST(RecordingLine, CancelBeforeTheFirstPacketAndOfAPipeHaveNoShare) {
    ConversionAccount account = Canceled().account;
    account.inputBytes = 0;
    EXPECT_EQ(DescribeHowFar(account), L"after 3 min 20.0 s");
    account.packets = 0;
    EXPECT_EQ(DescribeHowFar(account), L"before its first packet");
}

TEST(RecordingLine, NotesAreHiddenByQuietAndLossesNever) {
    const RecordingOutcome outcome = With(With(Whole(), kNote), kLoss);
    const std::wstring line =
        L"rat.ord: 10 min 0.0 s, 64 channels -> out/rat (67 files, 2.3 GB), with losses: damaged "
        L"at byte 7";
    EXPECT_EQ(DescribeRecording(kRecording, outcome, false),
              (Lines{line, L"rat.ord: something worth knowing"}));
    EXPECT_EQ(DescribeRecording(kRecording, outcome, true), Lines{line});
}

TEST(RecordingLine, CommandAddsItsOwnAdvice) {
    RecordingOutcome outcome = Whole();
    outcome.converted = false;
    outcome.status = L"Processing failed - Failed to process buffer. 0 bytes consumed.";
    const auto line = [&](Cause cause) {
        ConversionDetail detail{Kind::kIncomplete, L"/data/rat.ord: stopped", cause};
        detail.openFilesNeeded = 300;
        return DescribeRecording(kRecording, With(outcome, detail), true).front();
    };
    const std::wstring plain =
        L"rat.ord: failed after reading 10 min 0.0 s -> out/rat (67 files, 2.3 GB): stopped";
    EXPECT_EQ(line(Cause::kOther), plain);
    EXPECT_NE(line(Cause::kDamaged).find(L"; --salvage keeps "), std::wstring::npos);
    EXPECT_NE(line(Cause::kInputFailed).find(L"; --keep-partial keeps "), std::wstring::npos);
    EXPECT_NE(line(Cause::kOpenFileLimit).find(L"(ulimit -n 300) or fewer --jobs"),
              std::wstring::npos);
    EXPECT_NE(line(Cause::kOutOfMemory).find(L"fewer --jobs"), std::wstring::npos);
}

TEST(RecordingLine, FailureWithoutADetailHasTheReasonOfTheStatus) {
    RecordingOutcome outcome;
    outcome.status = L"Processing failed - Not enough memory";
    EXPECT_EQ(DescribeRecording(kRecording, outcome, true),
              Lines{L"rat.ord: not converted: Not enough memory"});
}

TEST(RecordingVerdict, IncompleteOutputIsAFailureWhateverTheStatusSays) {
    EXPECT_EQ(VerdictOf(With(Whole(), kIncomplete)), Verdict::kFailed);
    EXPECT_EQ(VerdictOf(With(Canceled(), kIncomplete)), Verdict::kFailed);
    EXPECT_EQ(VerdictOf(With(Canceled(), kLoss)), Verdict::kCanceled);
    EXPECT_EQ(VerdictOf(With(Whole(), kNote)), Verdict::kWhole);
    EXPECT_EQ(VerdictOf(RecordingOutcome()), Verdict::kNotBegun);
}

TEST(Recap, CanceledRecordingsAreNamedWithHowFarTheyCame) {
    EXPECT_EQ(DescribeAll({kRecording, kRecording}, {Whole(), Canceled()}, true),
              (Lines{L"2 recordings: 1 converted, 0 with losses, 0 failed, 1 canceled",
                     L"  canceled: rat.ord after 3 min 20.0 s (34 %)"}));
}

TEST(ExitStatusOfARun, IsTheWorstOfItsRecordings) {
    const auto status = [](const std::vector<RecordingOutcome>& outcomes) {
        return ExitStatus(outcomes, false, Interruption::kNone);
    };
    const RecordingOutcome losses = With(Whole(), kLoss);
    const RecordingOutcome failed = With(Whole(), kIncomplete);
    EXPECT_EQ(status({Whole(), With(Whole(), kNote)}), 0);
    EXPECT_EQ(status({Whole(), losses, Whole()}), 3);
    EXPECT_EQ(status({losses, failed, Whole()}), 1);
    EXPECT_EQ(status({Whole(), RecordingOutcome()}), 1);
}

TEST(ExitStatusOfARun, CancelHasItsOwnAlsoAfterAFailure) {
    const std::vector<RecordingOutcome> outcomes = {With(Whole(), kIncomplete), Canceled()};
    EXPECT_EQ(ExitStatus(outcomes, true, Interruption::kInterrupt), 130);
    EXPECT_EQ(ExitStatus(outcomes, true, Interruption::kTerminate), 143);
    EXPECT_EQ(ExitStatus(outcomes, true, Interruption::kHangUp), 129);
}

// A shell's loop must stop, even if the last packet was converted before the Ctrl-C.
TEST(ExitStatusOfARun, InterruptThatCanceledNothingStillShows) {
    EXPECT_EQ(ExitStatus({Whole()}, false, Interruption::kInterrupt), 130);
    EXPECT_EQ(ExitStatus({Whole()}, false, Interruption::kTerminate), 0);
    EXPECT_EQ(ExitStatus({With(Whole(), kLoss)}, false, Interruption::kHangUp), 3);
}

}  // namespace
}  // namespace stalwick
