#include "cli/convert_command.h"

#include <chrono>
#include <cstdio>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "cli/command_line.h"
#include "cli/conversion_batch.h"
#include "cli/conversion_plan.h"
#include "cli/exit_status.h"
#include "cli/progress_bar.h"
#include "engine/conversion_job.h"
#include "engine/output_directory.h"
#include "platform/console.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

void PrintLine(std::FILE* stream, const std::wstring& text) {
    const std::string line = ToUtf8(OneLine(text)) + "\n";
    std::fwrite(line.data(), 1, line.size(), stream);
}

bool PrintStatus(const std::wstring& status) {
    PrintLine(stdout, status);
    if (std::fflush(stdout) == 0) return true;
    PrintLine(stderr, L"stalwick-convert: cannot write to standard output: " + status);
    return false;
}

void PrintDetails(const ConversionBatch& batch) {
    for (const FileOutcome& outcome : batch.Outcomes()) {
        for (const ConversionDetail& detail : outcome.details) PrintLine(stderr, detail.text);
    }
}

void PrintRecap(const CommandLine& commandLine, const ConversionBatch& batch) {
    std::size_t failed = 0;
    for (const FileOutcome& outcome : batch.Outcomes()) failed += outcome.converted ? 0 : 1;
    if (failed == 0) return;
    PrintLine(stderr, std::to_wstring(failed) + L" of " + std::to_wstring(batch.Outcomes().size()) +
                          L" files failed:");
    for (std::size_t i = 0; i < batch.Outcomes().size(); ++i) {
        const FileOutcome& outcome = batch.Outcomes()[i];
        if (outcome.converted) continue;
        PrintLine(stderr, commandLine.inputFiles[i] + L": " + outcome.status);
    }
}

bool EverythingWritten(const ConversionBatch& batch) {
    for (const FileOutcome& outcome : batch.Outcomes()) {
        if (!outcome.converted) return false;
        for (const ConversionDetail& detail : outcome.details) {
            if (detail.kind == ConversionDetail::Kind::kIncomplete) return false;
        }
    }
    return true;
}

int ExitStatus(const ConversionBatch& batch, Interruption interruption) {
    // Also where a recording had failed before: whoever canceled knows that not all is done.
    if (batch.Canceled()) return CancelExitStatus(interruption);
    return EverythingWritten(batch) ? kExitComplete : kExitFailed;
}

// Runs the batch on a thread of its own while this one draws and listens for signals. Where no
// thread can be had this one converts: a first signal then has no effect, a second one ends it.
void RunWatched(ConversionBatch& batch, const std::atomic<Interruption>& interruption,
                bool showProgress) {
    constexpr std::chrono::milliseconds kPollPeriod(100);
    ProgressBar bar(showProgress);
    std::future<void> done =
        std::async(std::launch::async | std::launch::deferred, [&] { batch.Run(); });
    while (done.wait_for(kPollPeriod) == std::future_status::timeout) {
        if (interruption.load(std::memory_order_relaxed) != Interruption::kNone) batch.Cancel();
        bar.Show(batch.Progress());
    }
    done.wait();
    bar.Finish(batch.Progress());
    done.get();
}

// What is refused before anything starts, with the reason on standard error.
bool IsPossible(const CommandLine& commandLine, const std::vector<PlannedRecording>& recordings) {
    if (const std::wstring shared = DescribeSharedDirectory(recordings); !shared.empty()) {
        PrintLine(stderr, L"stalwick-convert: " + shared);
        return false;
    }
    const std::wstring& directory = commandLine.outputDirectory;
    if (directory.empty()) return true;
    const SystemErrorCode code = EnsureOutputDirectory(directory);
    if (code == 0) return true;
    PrintLine(stderr, OutputDirectoryErrorText(directory) + L" (" + SystemErrorText(code) + L")");
    return false;
}

int Convert(const CommandLine& commandLine) {
    static std::atomic<Interruption> interruption{Interruption::kNone};
    std::vector<PlannedRecording> recordings = PlanRecordings(commandLine);
    if (!IsPossible(commandLine, recordings)) return kExitUsage;
    WatchInterruptions(interruption);
    ConversionBatch batch(commandLine, std::move(recordings));
    RunWatched(batch, interruption, !commandLine.quiet);
    if (!commandLine.quiet) PrintDetails(batch);
    if (commandLine.keepGoing && !commandLine.quiet) PrintRecap(commandLine, batch);
    if (!PrintStatus(batch.Status())) return kExitFailed;
    return ExitStatus(batch, interruption.load());
}

}  // namespace

int RunConvertCommand(const std::vector<std::string>& arguments) {
    const ParsedArguments parsed = ParseArguments(arguments);
    if (parsed.proceed) return Convert(parsed.commandLine);
    if (!parsed.error.empty()) PrintLine(stderr, FromUtf8(parsed.error));
    const bool printed = std::fputs(parsed.output.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return printed ? parsed.exitStatus : kExitFailed;
}

}  // namespace stalwick
