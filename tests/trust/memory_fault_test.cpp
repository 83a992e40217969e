// SPDX-License-Identifier: BSD-3-Clause

// One conversion for every allocation that it makes, in which that one fails: the command ends in
// order, and the files it leaves are valid.

#include <algorithm>
#include <exception>
#include <filesystem>
#include <ostream>

#include <gtest/gtest.h>

#include "cli/conversion_batch.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/fixed_identity.h"
#include "tests/trust/expected_outputs.h"
#include "tests/trust/failing_allocations.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

constexpr char kOldText[] = "made by somebody before";

struct Scene {
    const char* name;
    bool lasting;
    HelperThreads helperThreads;
};

void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

// Everything that the process has open, if the system reveals it.
std::size_t OpenFileCount() {
    if (kPathSeparator != L'/') return 0;
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

class MemoryFaultTest : public testing::TestWithParam<Scene> {
  protected:
    MemoryFaultTest() {
        line_.inputFiles = {PutRecording(directory_, recording_)};
        line_.outputDirectory = directory_.Path(L"out");
        line_.channelOptions = {1, 0, 0, 1};
        line_.writeRawData = true;
        line_.outputSettings.helperThreads = GetParam().helperThreads;
        ReferenceConvertInput input = ReferenceInput(
            recording_, {true, false, false, true, true, true}, line_.outputDirectory);
        input.takenNames = {"CSC1.vcs"};
        expected_ = ExpectFiles(ReferenceConvert(input));
    }

    void Prepare() const {
        std::filesystem::remove_all(ToUtf8(line_.outputDirectory));
        MakeDirectory(line_.outputDirectory);
        MakeDirectory(RecordingDirectory());
        WriteFile(RecordingDirectory() + kPathSeparator + L"CSC1.vcs", kOldText);
    }
    std::wstring RecordingDirectory() const {
        return line_.outputDirectory + kPathSeparator + L"rec";
    }

    // The command's result: the status text, or the text of the exception that it reports. A
    // failure status comes with a detail that names the recording or one of its outputs.
    std::string Convert() const {
        try {
            ConversionBatch batch(line_, PlanRecordings(line_));
            batch.Run();
            FailingAllocations::Stop();
            const std::string status = ToUtf8(batch.Status());
            EXPECT_TRUE(status == "Processing complete" || TellsWhere(batch)) << status;
            return status;
        } catch (const std::exception& error) {
            FailingAllocations::Stop();
            return error.what();
        }
    }

    bool TellsWhere(const ConversionBatch& batch) const {
        const auto& details = batch.Outcomes()[0].account.details;
        return std::any_of(details.begin(), details.end(), [&](const ConversionDetail& detail) {
            return detail.kind == ConversionDetail::Kind::kIncomplete &&
                   (detail.text.find(line_.inputFiles[0]) != std::wstring::npos ||
                    detail.text.find(RecordingDirectory()) != std::wstring::npos);
        });
    }

    TempDirectory directory_;
    std::string recording_ = MakeFullRecording(2, 60);
    CommandLine line_;
    ExpectedFiles expected_;
};

TEST_P(MemoryFaultTest, EveryAllocationThatFailsEndsInOrder) {
    const FixedIdentity identity;
    std::uint64_t nth = 0;
    for (bool met = true; met; ++nth) {
        Prepare();
        SCOPED_TRACE("allocation " + std::to_string(nth));
        const FaultyFileCalls disk;
        const std::size_t openBefore = OpenFileCount();
        std::string outcome;
        {
            const FailingAllocations failing(nth, GetParam().lasting);
            outcome = Convert();
            met = FailingAllocations::Met();
        }
        ASSERT_EQ(OpenFileCount(), openBefore);
        ASSERT_EQ(disk.openCount, 0U);
        auto files = FilesIn(RecordingDirectory());
        ASSERT_EQ(files.at("CSC1.vcs"), kOldText);
        files.erase("CSC1.vcs");
        ASSERT_TRUE(AreValidRemainders(files, expected_)) << outcome;
        if (outcome == "Processing complete") {
            ASSERT_EQ(files.size(), expected_.size());
            for (const auto& [name, bytes] : files) {
                ASSERT_EQ(bytes.size(), 16384 + expected_.at(name).data.size()) << name;
            }
        } else {
            ASSERT_TRUE(met) << outcome;
            ASSERT_FALSE(outcome.empty());
        }
    }
    EXPECT_GT(nth, 100U);
    RecordProperty("faults", std::to_string(nth - 1));
}

INSTANTIATE_TEST_SUITE_P(All, MemoryFaultTest,
                         testing::Values(Scene{"Once", false, HelperThreads::kOff},
                                         Scene{"FromThenOn", true, HelperThreads::kOff},
                                         Scene{"OnceWithTwoThreads", false, HelperThreads::kOn},
                                         Scene{"FromThenOnWithTwoThreads", true,
                                               HelperThreads::kOn}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace stalwick::test
