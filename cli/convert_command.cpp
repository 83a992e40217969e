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
#include "cli/room_check.h"
#include "engine/output_directory.h"
#include "platform/console.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

bool PrintStatus(const std::wstring& status) {
    PrintLine(stdout, status);
    if (std::fflush(stdout) == 0) return true;
    PrintLine(stderr, L"stalwick-convert: cannot write to standard output: " + status);
    return false;
}

// Runs the batch on a thread of its own while this one draws and listens for signals. Where no
// thread can be had this one converts: a first signal then has no effect, a second one ends it.
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

// What is refused before anything starts, with the reason on standard error.
bool IsPossible(const CommandLine& commandLine, const std::vector<PlannedRecording>& recordings) {
    if (const std::wstring shared = DescribeSharedDirectory(recordings); !shared.empty()) {
        PrintLine(stderr, L"stalwick-convert: " + shared);
        return false;
    }
    const std::wstring& directory = commandLine.outputDirectory;
    // No directory is made for recordings none of which can be converted.
    if (directory.empty() || !AnyCanBeConverted(recordings)) return true;
    const SystemErrorCode code = EnsureOutputDirectory(directory);
    if (code == 0) return true;
    PrintLine(stderr, OutputDirectoryErrorText(directory) + L" (" + SystemErrorText(code) + L")");
    return false;
}

int Convert(const CommandLine& commandLine) {
    static std::atomic<Interruption> interruption{Interruption::kNone};
    std::vector<PlannedRecording> recordings = PlanRecordings(commandLine);
    if (!IsPossible(commandLine, recordings)) return kExitUsage;
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
    const int status = ExitStatus(batch.Outcomes(), batch.Canceled(), interruption.load());
    return printed || batch.Canceled() ? status : kExitFailed;
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
