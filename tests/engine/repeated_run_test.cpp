// SPDX-License-Identifier: BSD-3-Clause

// Existing outputs are never overwritten.

#include <algorithm>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

std::string FullRecording() {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, true, true, true, true, true, 40, {}, true};
    shape.packetCount = 60;
    return BuildOrdFile(Version2Header(2), MakeRandomPackets(61, shape));
}

// "CSC1.vcs" and 3: "CSC1_03.vcs".
std::string Numbered(const std::string& name, int number) {
    const std::size_t point = name.find('.');
    std::string numbered = name.substr(0, point);
    numbered += number < 10 ? "_0" : "_";
    return numbered.append(std::to_string(number)).append(name.substr(point));
}

// Packets carry more channels than the header announces, which is reported too.
bool IsWhole(const std::vector<ConversionDetail>& details) {
    return std::none_of(details.begin(), details.end(), [](const ConversionDetail& detail) {
        return detail.kind == ConversionDetail::Kind::kIncomplete;
    });
}

TEST(RepeatedRun, TwentyRunsLeaveTwentySets) {
    const TempDirectory directory;
    const std::string recording = FullRecording();
    std::map<std::string, std::string> files;
    std::set<std::string> names;
    for (int run = 0; run < 20; ++run) {
        const EngineRun result = RunEngine(directory, recording, AllOutputs());
        ASSERT_EQ(result.statusText, L"Processing complete");
        if (run == 0) {
            for (const auto& entry : result.files) names.insert(entry.first);
        }
        for (const auto& [name, bytes] : files) ASSERT_EQ(result.files.at(name), bytes) << name;
        files = result.files;
    }
    ASSERT_EQ(names.size(), 2U + 9 + 9 + 1 + 1 + 1);
    EXPECT_EQ(files.size(), 20 * names.size());
    for (const std::string& name : names) {
        for (int number = 1; number <= 19; ++number) {
            EXPECT_TRUE(files.contains(Numbered(name, number))) << Numbered(name, number);
        }
    }
}

TEST(RepeatedRun, NumberedFilesCarryTheirOwnPathAndTheSameRecords) {
    const TempDirectory directory;
    const std::string recording = FullRecording();
    RunEngine(directory, recording, AllOutputs());
    const EngineRun second = RunEngine(directory, recording, AllOutputs());
    const std::string& first = second.files.at("CSC1.vcs");
    const std::string& again = second.files.at("CSC1_01.vcs");
    EXPECT_TRUE(SameBytes(again.substr(16384), first.substr(16384)));
    EXPECT_NE(again.find("CSC1_01.vcs\"\r\n"), std::string::npos);
    EXPECT_NE(again.find("-AcqEntName CSC1\r\n"), std::string::npos);
}

TEST(RepeatedRun, NameTakenAtTheLastMomentIsChosenAgain) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    std::set<std::wstring> stolen;
    // Another program creates a file with every first name just before this one does.
    calls.beforeCreate = [&](const std::wstring& path) {
        if (path.find(L'_') == std::wstring::npos && stolen.insert(path).second) {
            WriteFile(path, "of another program");
        }
    };
    const EngineRun run =
        RunEngine(directory, FullRecording(), {true, false, false, true, true, true});
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_TRUE(IsWhole(run.details));
    ASSERT_EQ(stolen.size(), 5U);
    for (const char* name :
         {"CSC1.vcs", "CSC2.vcs", "Ultrasonic.vcs", "Events.vev", "RawData.vrd"}) {
        EXPECT_EQ(run.files.at(name), "of another program");
        EXPECT_GE(run.files.at(Numbered(name, 1)).size(), 16384U);
    }
}

TEST(RepeatedRun, TwoConversionsAtOnceDestroyNothing) {
    const TempDirectory directory;
    const std::wstring input = PutRecording(directory, FullRecording());
    constexpr int kRuns = 6;
    const auto convert = [&](std::wstring& status) {
        for (int run = 0; run < kRuns; ++run) {
            DataProcessor processor(QuickSettings());
            RunConversionJob(MakeJob(directory, {input}, AllOutputs(), processor, status));
            if (status != L"Processing complete" || !IsWhole(processor.Details())) {
                status = L"not complete";
                return;
            }
        }
    };
    std::wstring firstStatus;
    std::wstring secondStatus;
    std::thread other([&] { convert(secondStatus); });
    convert(firstStatus);
    other.join();
    EXPECT_EQ(firstStatus, L"Processing complete");
    EXPECT_EQ(secondStatus, L"Processing complete");
    const auto files = FilesIn(directory.Path(L"out") + kPathSeparator + L"rec");
    EXPECT_EQ(files.size(), 2 * kRuns * 23U);
    // Every set holds the same records.
    for (const auto& [name, bytes] : files) {
        for (const std::string first : {"CSC1", "RawData", "Events"}) {
            if (name.rfind(first, 0) != 0) continue;
            const std::string extension = name.substr(name.find('.'));
            EXPECT_TRUE(SameBytes(bytes.substr(16384), files.at(first + extension).substr(16384)));
        }
    }
}

}  // namespace
}  // namespace stalwick::test
