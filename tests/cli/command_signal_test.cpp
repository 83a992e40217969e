// SPDX-License-Identifier: BSD-3-Clause

// Signals to the command, on a recording that never ends: a named pipe fed by the test.

#include <csignal>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/cli/endless_recording.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

// A command that converts an endless recording.
struct RunningCommand {
    RunningCommand()
        : recording(directory.Path(L"rec.ord")),
          command({"--raw", "-o", ToUtf8(directory.Path(L"out")), recording.Path()}) {
        // The files exist only after the command waits for signals.
        while (!Exists(directory.Path(L"out/rec/RawData.vrd")) && !command.Ended()) {
            recording.Feed();
            Pause();
        }
    }

    CommandResult FeedUntilItEnds() {
        while (!command.Ended()) {
            recording.Feed();
            Pause();
        }
        return command.Wait();
    }

    TempDirectory directory;
    EndlessRecording recording;
    CommandProcess command;
};

void ExpectFinishedInOrder(const RunningCommand& running) {
    const auto files = FilesIn(running.directory.Path(L"out/rec"));
    EXPECT_EQ(files.size(), 4U);
    for (const char* name : {"CSC1.vcs", "CSC2.vcs", "RawData.vrd"}) {
        EXPECT_EQ(files.at(name).find("File was not closed properly"), std::string::npos) << name;
    }
}

TEST(CommandSignal, InterruptCancelsAsTheCancelButtonDoes) {
    RunningCommand running;
    running.command.Signal(SIGINT);
    const CommandResult result = running.FeedUntilItEnds();
    EXPECT_EQ(result.signal, SIGINT);  // a shell calls that 130
    EXPECT_EQ(result.output, "Data processing canceled.\n");
    ExpectFinishedInOrder(running);
}

TEST(CommandSignal, LossOfTheTerminalCancelsToo) {
    RunningCommand running;
    running.command.Signal(SIGHUP);
    const CommandResult result = running.FeedUntilItEnds();
    EXPECT_EQ(result.exitStatus, 129);
    EXPECT_EQ(result.output, "Data processing canceled.\n");
    ExpectFinishedInOrder(running);
}

TEST(CommandSignal, SecondSignalOfAnyKindEndsTheCommandAtOnce) {
    RunningCommand running;
    running.command.Signal(SIGTERM);
    while (!running.command.Ended()) {
        running.command.Signal(SIGHUP);
        Pause();
    }
    EXPECT_EQ(running.command.Wait().signal, SIGHUP);
}

// Whether a shell waits for its command: only then does it catch the interrupt, and it sleeps. The
// system shows both at the same moment.
bool WaitsForItsCommand(pid_t shell) {
    std::ifstream status("/proc/" + std::to_string(shell) + "/status");
    bool sleeps = false;
    bool catches = false;
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("State:\tS", 0) == 0) sleeps = true;
        if (line.rfind("SigCgt:\t", 0) != 0) continue;
        const auto caught = std::stoull(line.substr(line.find('\t') + 1), nullptr, 16);
        catches = (caught >> static_cast<unsigned>(SIGINT - 1) & 1U) != 0;
    }
    return sleeps && catches;
}

// The shell receives the Ctrl-C too, and continues unless its command died of it.
TEST(CommandSignal, InterruptStopsTheLoopOfAShell) {
    const TempDirectory directory;
    EndlessRecording recording(directory.Path(L"first.ord"));
    WriteFile(directory.Path(L"second.ord"),
              BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(5)));
    CommandSetup setup;
    setup.workingDirectory = directory.Path();
    setup.prepare = [] {
        ::setpgid(0, 0);
        ::execl("/bin/bash", "bash", "-c",
                "for f in first second; do " STALWICK_CONVERT_COMMAND " -o out $f.ord; done",
                nullptr);
    };
    CommandProcess shell({}, setup);
    while (!Exists(directory.Path(L"out/first/Events.vev")) && !shell.Ended()) Pause();
    // A shell that does not wait yet ends by itself.
    while (!WaitsForItsCommand(shell.Pid())) Pause();
    ::kill(-shell.Pid(), SIGINT);
    while (!shell.Ended()) {
        recording.Feed();
        Pause();
    }
    const CommandResult result = shell.Wait();
    EXPECT_EQ(result.signal, SIGINT);
    EXPECT_EQ(result.output, "Data processing canceled.\n");
    EXPECT_FALSE(Exists(directory.Path(L"out/second")));
}

TEST(CommandSignal, CancelShowsInTheStatusAlsoAfterAFailureAndWithJobs) {
    for (const char* jobs : {"-j1", "-j2"}) {
        const TempDirectory directory;
        EndlessRecording recording(directory.Path(L"endless.ord"));
        WriteFile(directory.Path(L"broken.ord"), "");
        CommandProcess command({"-k", jobs, "-o", ToUtf8(directory.Path(L"out")),
                                ToUtf8(directory.Path(L"broken.ord")), recording.Path()});
        while (!Exists(directory.Path(L"out/endless/Events.vev")) && !command.Ended()) Pause();
        command.Signal(SIGTERM);
        while (!command.Ended()) {
            recording.Feed();
            Pause();
        }
        EXPECT_EQ(command.Wait().exitStatus, 143) << jobs;
    }
}

TEST(CommandSignal, RequestToTerminateCancelsToo) {
    RunningCommand running;
    running.command.Signal(SIGTERM);
    const CommandResult result = running.FeedUntilItEnds();
    EXPECT_EQ(result.exitStatus, 143);
    EXPECT_EQ(result.output, "Data processing canceled.\n");
    ExpectFinishedInOrder(running);
}

// A shell's background job must survive the Ctrl-C that ends another one.
TEST(CommandSignal, SignalThatTheCallerIgnoresStaysIgnored) {
    const TempDirectory directory;
    EndlessRecording recording(directory.Path(L"rec.ord"));
    CommandSetup setup;
    setup.prepare = [] { std::signal(SIGINT, SIG_IGN); };
    CommandProcess command({"-o", ToUtf8(directory.Path(L"out")), recording.Path()}, setup);
    while (!Exists(directory.Path(L"out/rec/Events.vev")) && !command.Ended()) Pause();
    command.Signal(SIGINT);
    command.Signal(SIGINT);
    for (int i = 0; i < 50; ++i) {
        recording.Feed();
        Pause();
    }
    EXPECT_FALSE(command.Ended());
    command.Signal(SIGTERM);
    Pause();
    command.Signal(SIGINT);
    while (!command.Ended()) {
        recording.Feed();
        Pause();
    }
    EXPECT_EQ(command.Wait().exitStatus, 143);
}

TEST(CommandSignal, SecondSignalEndsTheCommandAtOnce) {
    RunningCommand running;
    // Nothing more comes: the command waits for its input and cannot finish.
    while (!running.command.Ended()) {
        running.command.Signal(SIGINT);
        Pause();
    }
    const CommandResult result = running.command.Wait();
    EXPECT_EQ(result.signal, SIGINT);
    EXPECT_EQ(result.output, "");
}

TEST(CommandSignal, FilesAfterTheCanceledOneGetHeadersAndNoData) {
    const TempDirectory directory;
    EndlessRecording recording(directory.Path(L"first.ord"));
    WriteFile(directory.Path(L"second.ord"),
              BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(500)));
    CommandProcess command({"-o", ToUtf8(directory.Path(L"out")), recording.Path(),
                            ToUtf8(directory.Path(L"second.ord"))});
    bool signaled = false;
    while (!command.Ended()) {
        recording.Feed();
        if (!signaled && Exists(directory.Path(L"out/first/Events.vev"))) {
            command.Signal(SIGINT);
            signaled = true;
        }
        Pause();
    }
    EXPECT_EQ(command.Wait().signal, SIGINT);
    const auto files = FilesIn(directory.Path(L"out/second"));
    EXPECT_EQ(files.size(), 2U);
    for (const auto& [name, bytes] : files) EXPECT_EQ(bytes.size(), 16384U) << name;
}

}  // namespace
}  // namespace stalwick::test
