// SPDX-License-Identifier: BSD-3-Clause
#include "cli/conversion_batch.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <new>
#include <semaphore>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cli/recap.h"
#include "cli/recording_line.h"
#include "platform/paths.h"
#include "platform/processor_count.h"
#include "tests/cli/small_recording.h"
#include "tests/support/engine_run.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

// A directory in/<n>/ for each file, so that files may have the same name.
std::wstring PutFile(const TempDirectory& directory, int number, const std::wstring& name,
                     const std::string& bytes) {
    const std::wstring folder = directory.Path(L"in" + std::to_wstring(number));
    MakeDirectory(folder);
    WriteFile(folder + kPathSeparator + name, bytes);
    return folder + kPathSeparator + name;
}

CommandLine LineFor(const TempDirectory& directory, std::vector<std::wstring> files,
                    std::uint32_t jobs) {
    CommandLine line;
    line.inputFiles = std::move(files);
    line.outputDirectory = directory.Path(L"out");
    line.channelOptions = {1, 0, 0, 0};
    line.jobs = jobs;
    line.outputSettings = QuickSettings();
    MakeDirectory(line.outputDirectory);
    return line;
}

std::map<std::string, std::string> Outputs(const TempDirectory& directory,
                                           const std::wstring& name) {
    return FilesIn(directory.Path(L"out") + kPathSeparator + name);
}

TEST(ConversionBatch, JobsGiveTheSameFilesAsOneAfterAnother) {
    const FixedIdentity identity;
    for (const std::uint32_t jobs : {0U, 1U, 2U, 5U, 64U}) {
        const TempDirectory directory;
        std::vector<std::wstring> files;
        for (int i = 0; i < 7; ++i) {
            files.push_back(PutFile(directory, i, L"r" + std::to_wstring(i) + L".ord",
                                    SmallRecording(static_cast<std::uint64_t>(i))));
        }
        const CommandLine line = LineFor(directory, files, jobs);
        ConversionBatch batch(line, PlanRecordings(line));
        batch.Run();
        EXPECT_EQ(batch.Status(), L"Processing complete");
        for (int i = 0; i < 7; ++i) {
            const auto outputs = Outputs(directory, L"r" + std::to_wstring(i));
            ASSERT_EQ(outputs.size(), 33U);
            ReferenceConvertInput input;
            input.recording = SmallRecording(static_cast<std::uint64_t>(i));
            const auto reference = ReferenceConvert(input);
            for (const auto& [name, bytes] : reference.files) {
                EXPECT_TRUE(SameBytes(outputs.at(name).substr(kOrdHeaderBytes),
                                      bytes.substr(kOrdHeaderBytes)));
            }
        }
        const BatchProgress progress = batch.Progress();
        EXPECT_EQ(progress.currentFile, 7U);
        EXPECT_EQ(progress.fileCount, 7U);
        EXPECT_EQ(progress.currentName, L"r6.ord");
        EXPECT_EQ(progress.bytesProcessed, progress.bytesTotal);
    }
}

TEST(ConversionBatch, StatusIsThatOfTheFirstFailureInTheListsOrder) {
    const TempDirectory directory;
    const std::wstring good = PutFile(directory, 0, L"good.ord", SmallRecording(1));
    const std::wstring last = PutFile(directory, 0, L"last.ord", SmallRecording(1));
    const std::wstring noHeader = PutFile(directory, 1, L"empty.ord", "");
    const std::wstring missing = directory.Path(L"missing.ord");
    for (const std::uint32_t jobs : {1U, 4U}) {
        CommandLine line = LineFor(directory, {good, noHeader, missing, last}, jobs);
        line.keepGoing = true;
        ConversionBatch batch(line, PlanRecordings(line));
        batch.Run();
        EXPECT_EQ(batch.Status(),
                  L"Processing failed - Error retrieving header field -NumADChannels");
        EXPECT_TRUE(batch.Outcomes()[0].converted);
        EXPECT_FALSE(batch.Outcomes()[1].converted);
        EXPECT_FALSE(batch.Outcomes()[2].converted);
        EXPECT_TRUE(batch.Outcomes()[3].converted);
    }
}

TEST(ConversionBatch, FilesBeforeAFailureAreConvertedAndFarOnesAfterItAreNot) {
    const TempDirectory directory;
    std::vector<std::wstring> files;
    for (int i = 0; i < 40; ++i) {
        const std::wstring name = L"r" + std::to_wstring(i) + L".ord";
        files.push_back(PutFile(directory, i, name, i == 5 ? "" : SmallRecording(1)));
    }
    for (const std::uint32_t jobs : {1U, 3U}) {
        const CommandLine line = LineFor(directory, files, jobs);
        ConversionBatch batch(line, PlanRecordings(line));
        batch.Run();
        for (std::size_t i = 0; i < 5; ++i) EXPECT_TRUE(batch.Outcomes()[i].converted);
        EXPECT_FALSE(batch.Outcomes()[5].converted);
        EXPECT_TRUE(batch.Outcomes()[39].status.empty());
        if (jobs > 1) continue;  // others may have begun already
        EXPECT_TRUE(batch.Outcomes()[6].status.empty());
    }
}

// Something happens at the n-th read of any file.
class AtRead final : public ForwardingFileCalls {
  public:
    AtRead(int number, std::function<void()> happens)
        : left_(number), happens_(std::move(happens)) {}

    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override {
        if (--left_ == 0) happens_();
        return ForwardingFileCalls::Read(handle, data, size, transferred);
    }

    bool Happened() const { return left_ <= 0; }

  private:
    std::atomic<int> left_;
    std::function<void()> happens_;
};

// The second read of a recording lasts until the others have ended; from then on, a read is slow as
// long as one thread does them all.
class LongReads final : public ForwardingFileCalls {
  public:
    explicit LongReads(std::wstring path) : path_(std::move(path)) {}

    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override {
        const SystemErrorCode code = ForwardingFileCalls::OpenForReading(path, handle);
        if (path == path_) slow_ = handle;
        return code;
    }
    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override {
        if (handle == slow_) {
            if (++reads_ == 2) othersEnded_ = others_.try_acquire_for(std::chrono::seconds(60));
            threads_.insert(std::this_thread::get_id());
            if (reads_ > 2 && threads_.size() == 1) {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
            }
        }
        return ForwardingFileCalls::Read(handle, data, size, transferred);
    }

    void EndOthers() { others_.release(); }
    bool OthersEnded() const { return othersEnded_; }
    std::size_t Threads() const { return threads_.size(); }

  private:
    std::wstring path_;
    std::atomic<FileHandle> slow_{kNoFile};
    std::binary_semaphore others_{0};
    int reads_ = 0;
    bool othersEnded_ = false;
    std::set<std::thread::id> threads_;  // that read it
};

TEST(ConversionBatch, LastRecordingGetsTheCoreOfAJobThatFindsNone) {
    if (UsableProcessors() < 2) GTEST_SKIP() << "there is no other core";
    const TempDirectory directory;
    RandomRecordingShape shape;
    shape.packetCount = 3000;
    // As many as there are cores, so that at first none is left.
    std::vector<std::wstring> files = {PutFile(
        directory, 0, L"long.ord", BuildOrdFile(Version2Header(32), MakeRandomPackets(3, shape)))};
    std::atomic<unsigned> others = UsableProcessors() - 1;
    for (unsigned i = 0; i < others; ++i) {
        const std::wstring name = L"short" + std::to_wstring(i) + L".ord";
        files.push_back(PutFile(directory, 0, name, SmallRecording(i)));
    }
    const CommandLine line = LineFor(directory, files, UsableProcessors());
    ConversionBatch batch(line, PlanRecordings(line));
    LongReads calls(files.front());
    batch.Run([&](std::size_t index) {
        if (index != 0 && --others == 0) calls.EndOthers();
    });
    EXPECT_EQ(batch.Status(), L"Processing complete");
    EXPECT_TRUE(calls.OthersEnded());
    EXPECT_EQ(calls.Threads(), 2U);
}

// A recording of one channel that is already converted, and a command line that skips it.
class ConvertedAlready : public testing::Test {
  protected:
    ConvertedAlready()
        : line_(LineFor(directory_,
                        {PutFile(directory_, 0, L"r.ord",
                                 BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(60)))},
                        1)) {
        ConversionBatch(line_, PlanRecordings(line_)).Run();
        before_ = Outputs(directory_, L"r");
        line_.skipConverted = true;
    }

    TempDirectory directory_;
    CommandLine line_;
    std::map<std::string, std::string> before_;
};

TEST_F(ConvertedAlready, CancelBeforeTheCheckMakesNothing) {
    ConversionBatch batch(line_, PlanRecordings(line_));
    batch.Cancel();
    batch.Run();
    EXPECT_TRUE(Outputs(directory_, L"r") == before_);
    EXPECT_EQ(batch.Status(), L"Data processing canceled.");
    EXPECT_EQ(VerdictOf(batch.Outcomes()[0]), Verdict::kCanceled);
    const auto lines = DescribeRecording(batch.Recordings()[0], batch.Outcomes()[0], true);
    EXPECT_EQ(lines, std::vector<std::wstring>{line_.inputFiles[0] + L": canceled, not checked"});
}

TEST_F(ConvertedAlready, CancelAtAnyReadOfTheCheckMakesNothing) {
    bool happened = true;
    std::map<Verdict, int> verdicts;
    for (int number = 1; happened; ++number) {
        ConversionBatch batch(line_, PlanRecordings(line_));
        const AtRead cancel(number, [&] { batch.Cancel(); });
        batch.Run();
        happened = cancel.Happened();
        ASSERT_TRUE(Outputs(directory_, L"r") == before_) << "read " << number;
        ++verdicts[VerdictOf(batch.Outcomes()[0])];
    }
    // Canceled in its first reads; whole if the check completed.
    EXPECT_GT(verdicts[Verdict::kCanceled], 1);
    EXPECT_GT(verdicts[Verdict::kPassedOver], 0);
    EXPECT_EQ(verdicts.size(), 2U);
}

TEST_F(ConvertedAlready, RecapNamesWhatWasNotChecked) {
    line_.inputFiles.push_back(PutFile(directory_, 1, L"s.ord", SmallRecording(1)));
    ConversionBatch batch(line_, PlanRecordings(line_));
    batch.Run([&](std::size_t) { batch.Cancel(); });
    const auto lines = DescribeAll(batch.Recordings(), batch.Outcomes(), false);
    const std::vector<std::wstring> expected = {
        L"2 recordings: 0 converted, 1 skipped, 0 with losses, 0 failed, 1 canceled",
        L"  canceled: " + line_.inputFiles[1] + L", not checked"};
    EXPECT_EQ(lines, expected);
}

TEST(ConversionBatch, LackOfMemoryInACheckFailsThatRecordingOnly) {
    const TempDirectory directory;
    CommandLine line = LineFor(directory,
                               {PutFile(directory, 0, L"first.ord", SmallRecording(1)),
                                PutFile(directory, 0, L"second.ord", SmallRecording(2))},
                               1);
    line.keepGoing = true;
    ConversionBatch batch(line, PlanRecordings(line));
    const AtRead runsOut(1, [] { throw std::bad_alloc(); });
    batch.Run();
    EXPECT_EQ(VerdictOf(batch.Outcomes()[0]), Verdict::kFailed);
    EXPECT_EQ(VerdictOf(batch.Outcomes()[1]), Verdict::kWhole);
    const auto lines = DescribeRecording(batch.Recordings()[0], batch.Outcomes()[0], true);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].rfind(line.inputFiles[0] + L": not converted", 0), 0U);
    EXPECT_NE(lines[0].find(L"not enough memory"), std::wstring::npos);
}

TEST(ConversionBatch, LackOfMemoryIsNotMistakenForAChangeOfTheRecording) {
    const TempDirectory directory;
    const std::wstring path = PutFile(directory, 0, L"r.ord", SmallRecording(1));
    CommandLine line = LineFor(directory, {path}, 1);
    line.checksum = true;
    ConversionBatch batch(line, PlanRecordings(line));
    {
        const AtRead runsOut(1, [] { throw std::bad_alloc(); });
        batch.Run();
    }
    const RecordingOutcome& outcome = batch.Outcomes()[0];
    EXPECT_EQ(VerdictOf(outcome), Verdict::kFailed);
    EXPECT_EQ(outcome.file, QueryRecordingFile(path));
    EXPECT_EQ(outcome.checksums.failures, std::vector<std::wstring>());
    EXPECT_EQ(outcome.checksums.recording.size(), 64U);
}

}  // namespace
}  // namespace stalwick::test
