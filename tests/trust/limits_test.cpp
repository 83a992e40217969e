// SPDX-License-Identifier: BSD-3-Clause

// The command under the limits that a system sets for a process.

#include <csignal>

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <linux/capability.h>

#include "tests/support/engine_run.h"
#include "tests/trust/command_run.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

constexpr unsigned kMostChannels = 256;
constexpr std::size_t kMostOutputs = 277;  // 256 + 9 + 9 + 1 channel files, events, raw data

CommandSetup WithLimit(int resource, rlim_t soft, rlim_t hard) {
    CommandSetup setup;
    setup.prepare = [=] {
        const rlimit limit{soft, hard};
        ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
    };
    return setup;
}

rlim_t HardLimitOfFiles() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_max;
}

TEST(OpenFileLimit, AllOutputsOpenAtTheUsualLimit) {
    const CommandScene scene(MakeFullRecording(kMostChannels, 3));
    const CommandResult result = scene.Run(WithLimit(RLIMIT_NOFILE, 1024, HardLimitOfFiles()));
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(scene.MaskedFiles().size(), kMostOutputs);
    EXPECT_TRUE(SameFiles(scene.MaskedFiles(), scene.Reference().files));
}

TEST(OpenFileLimit, ProgramRaisesItsOwnLimit) {
    if (HardLimitOfFiles() < 1024) GTEST_SKIP() << "the hard limit is too low here";
    const CommandScene scene(MakeFullRecording(kMostChannels, 3));
    const CommandResult result = scene.Run(WithLimit(RLIMIT_NOFILE, 64, HardLimitOfFiles()));
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_TRUE(SameFiles(scene.MaskedFiles(), scene.Reference().files));
}

TEST(OpenFileLimit, ProgramRaisesItsOwnLimitForAllJobsTogether) {
    if (HardLimitOfFiles() < 2048) GTEST_SKIP() << "the hard limit is too low here";
    // Long enough for all four to be open at the same time.
    const CommandScene scene(MakeFullRecording(kMostChannels, 200));
    std::vector<std::string> arguments = {"-j", "4", "-o", ToUtf8(scene.OutputDirectory())};
    for (const wchar_t* name : {L"a.ord", L"b.ord", L"c.ord", L"d.ord"}) {
        const std::wstring path =
            scene.InputPath().substr(0, scene.InputPath().rfind(kPathSeparator) + 1) + name;
        WriteFile(path, ReadFile(scene.InputPath()));
        arguments.push_back(ToUtf8(path));
    }
    const CommandResult result =
        RunCommand(arguments, WithLimit(RLIMIT_NOFILE, 300, HardLimitOfFiles()));
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    for (const wchar_t* name : {L"a", L"b", L"c", L"d"}) {
        EXPECT_EQ(FilesIn(scene.OutputDirectory() + kPathSeparator + name).size(),
                  kMostChannels + 1);
    }
}

TEST(OpenFileLimit, LimitOfAnAdministratorIsReportedWithTheNumbers) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP()
        << "the sanitizer's check of an object opens a pipe, and takes its failure for ours";
#endif
    const CommandScene scene(MakeFullRecording(kMostChannels, 3));
    const CommandResult result = scene.Run(WithLimit(RLIMIT_NOFILE, 128, 128));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing failed\n");
    EXPECT_NE(result.error.find("Too many open files"), std::string::npos) << result.error;
    EXPECT_NE(result.error.find("277 outputs"), std::string::npos) << result.error;
    EXPECT_NE(result.error.find("128 files"), std::string::npos) << result.error;
}

TEST(FileSizeLimit, OutputThatReachesItIsReportedAndTheCommandContinuesToItsEnd) {
    const CommandScene scene(MakeFullRecording(4, 300));
    CommandSetup setup;
    setup.prepare = [] {
        std::signal(SIGXFSZ, SIG_DFL);  // would end the process
        const rlimit limit{100000, 100000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    };
    const CommandResult result = scene.Run(setup);
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing complete\n");  // only the raw data file is that long
    EXPECT_NE(result.error.find("RawData.vrd is incomplete: cannot write"), std::string::npos);
    EXPECT_NE(result.error.find("choose a disk that takes larger files"), std::string::npos);
}

TEST(ClosedStreams, MessagesNeverGoIntoAnOutput) {
    const CommandScene scene(MakeFullRecording(4, 3) + "a tail that is reported");
    CommandSetup setup;
    setup.prepare = [] {
        for (int stream = 0; stream <= 2; ++stream) ::close(stream);
    };
    const CommandResult result = scene.Run(setup);
    EXPECT_EQ(result.exitStatus, 1);  // nobody could read the status
    EXPECT_TRUE(SameFiles(scene.MaskedFiles(), scene.Reference().files));
}

// Subjects root to permissions, like everybody else.
void ObeyPermissions() {
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

TEST(ReadOnlyDirectory, IsNamedAndStaysUnchanged) {
    const CommandScene scene(MakeFullRecording(4, 3));
    const std::string out = ToUtf8(scene.OutputDirectory());
    ::chmod(out.c_str(), 0555);
    CommandSetup setup;
    setup.prepare = ObeyPermissions;
    const CommandResult result = scene.Run(setup);
    ::chmod(out.c_str(), 0755);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing failed\n");
    EXPECT_NE(result.error.find(ToUtf8(scene.RecordingDirectory())), std::string::npos);
    EXPECT_NE(result.error.find("Permission denied"), std::string::npos) << result.error;
    EXPECT_FALSE(Exists(scene.RecordingDirectory()));
}

TEST(ReadOnlyDirectory, OfTheRecordingIsNamedWithTheFirstOutput) {
    const CommandScene scene(MakeFullRecording(4, 3));
    MakeDirectory(scene.RecordingDirectory());
    const std::string rec = ToUtf8(scene.RecordingDirectory());
    ::chmod(rec.c_str(), 0555);
    CommandSetup setup;
    setup.prepare = ObeyPermissions;
    const CommandResult result = scene.Run(setup);
    ::chmod(rec.c_str(), 0755);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing failed\n");
    EXPECT_NE(result.error.find(rec + "/CSC1.vcs: Permission denied"), std::string::npos)
        << result.error;
    EXPECT_EQ(FilesIn(scene.RecordingDirectory()).size(), 0U);
}

// The reader's and the writers' memory is limited more and more, until nothing starts.
TEST(MemoryLimit, EveryLimitGivesAClearEnd) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer reserves more addresses than any limit here";
#endif
    const CommandScene scene(MakeFullRecording(32, 8));
    std::set<std::string> taken;
    int failed = 0;
    int complete = 0;
    for (rlim_t megabytes = 4; megabytes <= 400; megabytes += 6) {
        const auto before = FilesIn(scene.RecordingDirectory());
        const CommandResult result =
            scene.Run(WithLimit(RLIMIT_AS, megabytes << 20U, megabytes << 20U));
        if (result.exitStatus == 127) continue;  // too little to start a process at all
        // The loader ends like this before the program's first instruction.
        if (result.error.find("error while loading shared libraries") != std::string::npos)
            continue;
        EXPECT_EQ(result.signal, 0) << megabytes << " MB: " << result.error;
        if (result.exitStatus == 0) {
            ++complete;
        } else {
            ++failed;
            EXPECT_EQ(result.exitStatus, 1) << megabytes << " MB";
            EXPECT_FALSE((result.output + result.error).empty()) << megabytes << " MB";
        }
        const auto after = FilesIn(scene.RecordingDirectory());
        for (const auto& [name, bytes] : before) {
            EXPECT_TRUE(SameBytes(after.at(name), bytes)) << name;
        }
    }
    EXPECT_GT(failed, 0);
    EXPECT_GT(complete, 0);
}

}  // namespace
}  // namespace stalwick::test
