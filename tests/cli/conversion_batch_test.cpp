#include "cli/conversion_batch.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/ord_builder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

std::string Recording(std::uint64_t seed) {
    RandomRecordingShape shape;
    shape.packetCount = 60;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(seed, shape));
}

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
                                    Recording(static_cast<std::uint64_t>(i))));
        }
        const CommandLine line = LineFor(directory, files, jobs);
        ConversionBatch batch(line, PlanRecordings(line));
        batch.Run();
        EXPECT_EQ(batch.Status(), L"Processing complete");
        for (int i = 0; i < 7; ++i) {
            const auto outputs = Outputs(directory, L"r" + std::to_wstring(i));
            ASSERT_EQ(outputs.size(), 33U);
            ReferenceConvertInput input;
            input.recording = Recording(static_cast<std::uint64_t>(i));
            const auto reference = ReferenceConvert(input);
            for (const auto& [name, bytes] : reference.files) {
                EXPECT_TRUE(SameBytes(outputs.at(name).substr(kOrdHeaderBytes),
                                      bytes.substr(kOrdHeaderBytes)));
            }
        }
        const BatchProgress progress = batch.Progress();
        EXPECT_EQ(progress.currentFile, 7U);
        EXPECT_EQ(progress.fileCount, 7U);
        EXPECT_EQ(progress.bytesProcessed, progress.bytesTotal);
    }
}

TEST(ConversionBatch, StatusIsThatOfTheFirstFailureInTheListsOrder) {
    const TempDirectory directory;
    const std::wstring good = PutFile(directory, 0, L"good.ord", Recording(1));
    const std::wstring last = PutFile(directory, 0, L"last.ord", Recording(1));
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

TEST(ConversionBatch, FilesBeforeAFailureAreConvertedAndFarOnesBehindItAreNot) {
    const TempDirectory directory;
    std::vector<std::wstring> files;
    for (int i = 0; i < 40; ++i) {
        const std::wstring name = L"r" + std::to_wstring(i) + L".ord";
        files.push_back(PutFile(directory, i, name, i == 5 ? "" : Recording(1)));
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

}  // namespace
}  // namespace stalwick::test
