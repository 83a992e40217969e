// SPDX-License-Identifier: BSD-3-Clause
#include "cli/convert_command.h"

#include <chrono>
#include <cstdio>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "cli/before_conversion.h"
#include "cli/command_line.h"
#include "cli/conversion_batch.h"
#include "cli/conversion_plan.h"
#include "cli/exit_status.h"
#include "cli/print_line.h"
#include "cli/progress_bar.h"
#include "cli/recap.h"
#include "cli/recording_line.h"
#include "cli/report_file.h"
#include "cli/room_check.h"
#include "cli/run_report.h"
#include "engine/output_directory.h"
#include "platform/console.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

bool PrintStatus(const std::wstring& status) {
    PrintLine(stdout, status);
    if (FlushStandardOutput()) return true;
    PrintLine(stderr, L"stalwick-convert: cannot write to standard output: " + status);
    return false;
}

// Runs the batch on another thread while this one draws and waits for signals. If no thread is
// available, this one converts: a first signal then has no effect, a second one ends the process.
void RunWatched(ConversionBatch& batch, const std::atomic<Interruption>& interruption, bool quiet) {
    constexpr std::chrono::milliseconds kPollPeriod(100);
    ProgressBar bar(!quiet);
    const auto print = [&](std::size_t index) {
        bar.PrintLines(
            DescribeRecording(batch.Recordings()[index], batch.Outcomes()[index], quiet));
    };
    std::future<void> done =
        std::async(std::launch::async | std::launch::deferred, [&] { batch.Run(print); });
    while (done.wait_for(kPollPeriod) == std::future_status::timeout) {
        if (interruption.load(std::memory_order_relaxed) != Interruption::kNone) batch.Cancel();
        bar.Show(batch.Progress());
    }
    done.wait();
    bar.Finish(batch.Progress());
    done.get();
}

// Prints the reason, if there is one.
bool IsRefused(const std::wstring& reason) {
    if (!reason.empty()) PrintLine(stderr, L"stalwick-convert: " + reason);
    return !reason.empty();
}

// If not, prints the reason. Creates the output directory.
bool IsPossible(const CommandLine& commandLine, const std::vector<PlannedRecording>& recordings) {
    if (IsRefused(DescribeSharedDirectory(recordings))) return false;
    const std::wstring& directory = commandLine.outputDirectory;
    // No directory is created if none of the recordings can be converted.
    if (directory.empty() || !AnyCanBeConverted(recordings)) return true;
    const SystemErrorCode code = EnsureOutputDirectory(directory);
    if (code == 0) return true;
    PrintLine(stderr, OutputDirectoryErrorText(directory) + L" (" + SystemErrorText(code) + L")");
    return false;
}

bool ReportChecksumFailures(const std::vector<RecordingOutcome>& outcomes) {
    bool failed = false;
    for (const RecordingOutcome& outcome : outcomes) {
        for (const std::wstring& line : outcome.checksums.failures) PrintLine(stderr, line);
        failed = failed || !outcome.checksums.failures.empty();
    }
    return failed;
}

// Writes the report of a finished run. Returns the exit status.
int Report(RunReport& report, const ConversionBatch& batch) {
    report.recordings = &batch.Recordings();
    report.outcomes = &batch.Outcomes();
    report.status = batch.Status();
    report.ended = std::chrono::system_clock::now();
    const std::wstring failure =
        WriteReport(report.commandLine.reportPath, FormatRunReport(report));
    if (failure.empty()) return report.exitStatus;
    PrintLine(stderr, L"stalwick-convert: " + failure);
    return batch.Canceled() ? report.exitStatus : kExitFailed;
}

int Convert(const CommandLine& commandLine) {
    static std::atomic<Interruption> interruption{Interruption::kNone};
    std::vector<PlannedRecording> recordings = PlanRecordings(commandLine);
    RunReport report{.commandLine = commandLine, .started = std::chrono::system_clock::now()};
    const std::wstring& reportPath = commandLine.reportPath;
    const bool reports = !reportPath.empty();
    // The report's name is checked before a directory is created, its directory after that: the new
    // one may be the report's.
    if ((reports && IsRefused(RefuseReportName(reportPath))) ||
        !IsPossible(commandLine, recordings) ||
        (reports && IsRefused(RefuseReportDirectory(reportPath)))) {
        return kExitUsage;
    }
    if (!commandLine.quiet) {
        for (const std::wstring& line : DescribeLackOfRoom(recordings, commandLine)) {
            PrintLine(stderr, line);
        }
    }
    WatchInterruptions(interruption);
    ConversionBatch batch(commandLine, std::move(recordings));
    RunWatched(batch, interruption, commandLine.quiet);
    for (const std::wstring& line :
         DescribeAll(batch.Recordings(), batch.Outcomes(), commandLine.quiet)) {
        PrintLine(stderr, line);
    }
    const bool printed = PrintStatus(batch.Status());
    report.exitStatus = ExitStatus(batch.Outcomes(), batch.Canceled(), interruption.load());
    const bool checksumsFailed = ReportChecksumFailures(batch.Outcomes());
    if ((!printed || checksumsFailed) && !batch.Canceled()) report.exitStatus = kExitFailed;
    return reports ? Report(report, batch) : report.exitStatus;
}

}  // namespace

int RunConvertCommand(const std::vector<std::string>& arguments) {
    const ParsedArguments parsed = ParseArguments(arguments);
    if (parsed.proceed) return Convert(parsed.commandLine);
    if (!parsed.error.empty()) PrintLine(stderr, FromUtf8(parsed.error));
    std::fputs(parsed.output.c_str(), stdout);
    return FlushStandardOutput() ? parsed.exitStatus : kExitFailed;
}

}  // namespace stalwick
