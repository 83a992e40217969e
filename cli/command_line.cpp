// SPDX-License-Identifier: BSD-3-Clause
#include "cli/command_line.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>

#include "cli/argument_brackets.h"
#include "cli/exit_status.h"
#include "cli/usage_error.h"
#include "platform/program_version.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr char kProgram[] = "stalwick-convert";
constexpr std::uint32_t kMostJobs = 64;

// The values as CLI11 fills them in.
struct RawOptions {
    std::vector<std::string> files;
    std::string outputDirectory;
    bool noCsc = false;
    bool baseImu = false;
    bool afeImu = false;
    bool ultrasonic = false;
    bool raw = false;
    bool all = false;
    bool keepGoing = false;
    bool skipConverted = false;
    bool quiet = false;
    std::string report;
    bool checksum = false;
    bool page = false;
    bool noSync = false;
    bool keepPartial = false;
    bool salvage = false;
    std::uint32_t jobs = 0;
};

std::string VersionLine() {
    return std::string(kProgram) + ' ' + kVersion + '\n';
}

// In places, CLI11 itself reads "1x" as 1, "010" as 8, and a number beyond the type as the type's
// largest. It gets the number without leading zeros.
CLI::Validator WholeNumber(std::uint32_t least, std::uint32_t most) {
    return CLI::Validator(
        [least, most](std::string& text) {
            std::uint32_t value = 0;
            const char* const end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, value);
            if (error == std::errc() && stop == end && value >= least && value <= most) {
                text = std::to_string(value);
                return std::string();
            }
            return text + " is not a whole number from " + std::to_string(least) + " to " +
                   std::to_string(most);
        },
        "");
}

void DeclareProgram(CLI::App& app) {
    // A path may begin with a slash on Windows too.
    app.allow_windows_style_options(false);
    app.option_defaults()->disable_flag_override();  // --raw=false and --raw=7 are wrong usage
    app.set_help_flag("-h,--help", "Print this help message and exit");
    app.description(
        "Converts wireless recordings (.ord) into channel files (.vcs), an event file\n"
        "(.vev) and a raw data file (.vrd), in a separate directory for each recording.");
    app.footer(
        "Exit status: 0 all whole; 1 a conversion failed, an output is missing or incomplete, a\n"
        "checksum could not be computed, or the status, help, report or page could not be\n"
        "written; 2 wrong usage, output directory or report; 3 all written, but a recording\n"
        "itself lost data; 130, 143 or 129 canceled by SIGINT, SIGTERM or SIGHUP.");
}

// Up to its first ';', a description is also the text of the completions.
void DeclareOutputs(CLI::App& app, RawOptions& options) {
    app.add_option("FILE", options.files, "recordings to convert, in this order")->required();
    app.add_option("-o,--output-dir", options.outputDirectory,
                   "parent of the output directories; one level is created; default: the "
                   "directory of each FILE")
        ->type_name("DIR");
    app.add_flag("--no-csc", options.noCsc, "no channel files for the A/D channels");
    app.add_flag("--base-imu", options.baseImu, "channel files of the base inertial unit");
    app.add_flag("--afe-imu", options.afeImu, "channel files of the front-end inertial unit");
    app.add_flag("--ultrasonic", options.ultrasonic, "the channel file of the ultrasonic block");
    app.add_flag("--raw", options.raw, "the raw data file");
    app.add_flag("--all", options.all, "all of these additional outputs");
}

void DeclareRun(CLI::App& app, RawOptions& options) {
    app.add_flag("-k,--keep-going", options.keepGoing,
                 "continue with the other files after one fails");
    app.add_flag("--skip-converted", options.skipConverted,
                 "skip a FILE whose wanted outputs exist and are whole");
    app.add_flag("-q,--quiet", options.quiet,
                 "no progress, no notes, no lines for recordings that are whole");
    app.add_flag("--no-sync", options.noSync,
                 "do not wait for the disk before a file is marked as closed");
    app.add_flag("--keep-partial", options.keepPartial,
                 "if a recording fails in the middle, keep every whole record before that point, "
                 "not only multiples of 5000 of each file; at damage, the last ten samples may be "
                 "wrong");
    app.add_flag("--salvage", options.salvage,
                 "continue after damaged stretches of a recording and report what is lost");
    app.add_option("-j,--jobs", options.jobs,
                   "files converted in parallel, 1 to 64; 0: one for each core")
        ->type_name("N")
        ->transform(WholeNumber(0, kMostJobs))
        ->capture_default_str();
    CLI::Option* const report =
        app.add_option(
               "--report", options.report,
               "a JSON document about the run, written when it ends: inputs, outputs, gaps, "
               "losses; replaces only an earlier report of that name")
            ->type_name("FILE.json");
    app.add_flag("--checksum", options.checksum,
                 "add the SHA-256 of each recording and output to the report; reads them again")
        ->needs(report);
    app.add_flag("--page", options.page,
                 "write a page on how good each recording is next to its outputs; reads it again");
}

void Declare(CLI::App& app, RawOptions& options) {
    DeclareProgram(app);
    DeclareOutputs(app, options);
    DeclareRun(app, options);
    app.set_version_flag("--version", VersionLine());
    UncoverBrackets(app);
}

CommandLine ToCommandLine(const RawOptions& options) {
    CommandLine line;
    std::transform(options.files.begin(), options.files.end(), std::back_inserter(line.inputFiles),
                   FromUtf8);
    line.outputDirectory = FromUtf8(options.outputDirectory);
    const auto on = [](bool value) { return static_cast<std::uint8_t>(value ? 1 : 0); };
    line.channelOptions = {on(!options.noCsc), on(options.baseImu || options.all),
                           on(options.afeImu || options.all),
                           on(options.ultrasonic || options.all)};
    line.writeRawData = options.raw || options.all;
    line.keepGoing = options.keepGoing;
    line.skipConverted = options.skipConverted;
    line.quiet = options.quiet;
    line.reportPath = FromUtf8(options.report);
    line.checksum = options.checksum;
    line.page = options.page;
    line.jobs = options.jobs;
    line.outputSettings.syncBeforeFinalHeader = !options.noSync;
    line.outputSettings.keepPartialBlocks = options.keepPartial;
    line.outputSettings.onDamage = options.salvage ? OnDamage::kSkip : OnDamage::kStop;
    return line;
}

ParsedArguments UsageError(const std::string& what) {
    ParsedArguments parsed;
    parsed.error = std::string(kProgram) + ": " + ToUtf8(OneLine(FromUtf8(what))) + "; see " +
                   kProgram + " --help";
    parsed.exitStatus = kExitUsage;
    return parsed;
}

}  // namespace

ParsedArguments ParseArguments(std::vector<std::string> arguments) {
    CLI::App app("", kProgram);
    RawOptions options;
    Declare(app, options);
    ParsedArguments parsed;
    CoverBrackets(arguments);
    try {
        std::reverse(arguments.begin(), arguments.end());  // the order that CLI11 expects
        app.parse(arguments);
    } catch (const CLI::CallForHelp&) {
        parsed.output = app.help();
        return parsed;
    } catch (const CLI::CallForVersion&) {
        parsed.output = VersionLine();
        return parsed;
    } catch (const CLI::ParseError& error) {
        return UsageError(DescribeUsageError(app, error));
    }
    if (app.count("--output-dir") != 0 && options.outputDirectory.empty()) {
        return UsageError("-o: an empty directory name");
    }
    if (app.count("--report") != 0 && options.report.empty()) {
        return UsageError("--report: an empty file name");
    }
    parsed.proceed = true;
    parsed.commandLine = ToCommandLine(options);
    return parsed;
}

void VisitConvertOptions(const std::function<void(const CLI::App&)>& visit) {
    CLI::App app("", kProgram);
    RawOptions options;
    Declare(app, options);
    visit(app);
}

}  // namespace stalwick
