// SPDX-License-Identifier: BSD-3-Clause
#include "cli/inspect_command.h"

#include <algorithm>
#include <cstdio>

#include <CLI/CLI.hpp>

#include "cli/argument_brackets.h"
#include "cli/exit_status.h"
#include "cli/info_table.h"
#include "cli/plot_command.h"
#include "cli/print_line.h"
#include "cli/report_pages.h"
#include "cli/survey_losses.h"
#include "cli/usage_error.h"
#include "cli/verify_lines.h"
#include "page/info_json.h"
#include "platform/program_version.h"
#include "platform/text_encoding.h"
#include "survey/survey_recording.h"
#include "survey/verify_outputs.h"

namespace stalwick {

namespace {

constexpr char kProgram[] = "stalwick-inspect";

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
    bool quick = false;
};

void DeclareInfo(CLI::App& app, InfoOptions& options) {
    app.option_defaults()->disable_flag_override();
    app.add_option("FILE", options.files, "recordings to read, in this order")->required();
    app.add_flag("--json", options.json, "one JSON document for each recording, on one line");
    app.add_flag("--quick", options.quick, "read the header and the packets at both ends only");
    app.footer(
        "Exit status: 0 all whole; 1 a FILE cannot be read; 2 wrong usage; 3 a recording is\n"
        "damaged. Gaps and a recording that ends inside a packet are not damage.");
    UncoverBrackets(app);
}

struct VerifyOptions {
    std::vector<std::string> directories;
    std::string recording;
    bool salvaged = false;
};

void DeclareVerify(CLI::App& app, VerifyOptions& options) {
    app.option_defaults()->disable_flag_override();
    app.add_option("DIRECTORY", options.directories, "directories with the outputs of a recording")
        ->required();
    app.add_option("--against", options.recording, "compare everything with this recording")
        ->type_name("FILE.ord")
        ->check([](const std::string& path) {
            return path.empty() ? std::string("it needs the name of a recording") : std::string();
        });
    app.add_flag("--salvaged", options.salvaged,
                 "made by stalwick-convert --salvage: records may end before a damaged stretch");
    app.footer(
        "Exit status: 0 all whole; 1 something is not, or cannot be read; 2 wrong usage.\n"
        "Gaps belong to the recording; they are not a fault of its outputs.\n"
        "Outputs of a canceled conversion are whole in themselves; only --against shows that they "
        "end early.");
    UncoverBrackets(app);
}

struct InspectOptions {
    InfoOptions info;
    VerifyOptions verify;
    ReportPageOptions report;
    PlotOptions plot;
};

std::string VersionLine() {
    return std::string(kProgram) + ' ' + kVersion + '\n';
}

void Declare(CLI::App& app, InspectOptions& options) {
    app.description("Inspects wireless recordings (.ord) and the files they were converted to.");
    app.allow_windows_style_options(false);
    app.set_help_flag("-h,--help", "Print this help message and exit");
    app.set_version_flag("--version", VersionLine());
    app.require_subcommand(1);
    DeclareInfo(*app.add_subcommand("info", "Show what recordings hold"), options.info);
    DeclareVerify(*app.add_subcommand("verify", "Check whether outputs are whole"), options.verify);
    DeclareReport(*app.add_subcommand("report", "Make a page on how good recordings are"),
                  options.report);
    DeclarePlot(*app.add_subcommand("plot", "Draw a stretch of traces"), options.plot);
}

bool Flush() {
    if (FlushStandardOutput()) return true;
    PrintLine(stderr, L"stalwick-inspect: cannot write to standard output");
    return false;
}

void Print(const RecordingSurvey& survey, bool json) {
    if (json) {
        const std::string line = SurveyAsJson(survey) + "\n";
        std::fwrite(line.data(), 1, line.size(), stdout);
        return;
    }
    for (const std::wstring& line : SurveyAsTable(survey)) PrintLine(stdout, line);
}

int ShowInfo(const InfoOptions& options) {
    bool failed = false;
    bool damaged = false;
    for (const std::string& file : options.files) {
        const RecordingSurvey survey = SurveyRecording(
            FromUtf8(file), options.quick ? SurveyDepth::kQuick : SurveyDepth::kWhole);
        if (!survey.error.empty()) {
            ReportUnreadable(survey);
            failed = true;
            continue;
        }
        Print(survey, options.json);
        if (!Flush()) return kExitFailed;
        ReportLosses(survey);
        failed = failed || !survey.readError.empty();
        damaged = damaged || !survey.damage.empty();
    }
    if (failed) return kExitFailed;
    return damaged ? kExitLosses : kExitWhole;
}

int ShowVerify(const VerifyOptions& options) {
    bool whole = true;
    const std::wstring recording = FromUtf8(options.recording);
    for (const std::string& directory : options.directories) {
        VerifyRequest request{FromUtf8(directory), recording};
        request.salvaged = options.salvaged;
        const VerifyReport report = VerifyOutputs(request);
        whole = whole && report.IsWhole();
        for (const std::wstring& line : ReportAsLines(report, recording)) PrintLine(stdout, line);
        if (!Flush()) return kExitFailed;
        if (!report.recordingError.empty()) {
            PrintLine(stderr, recording + L": not compared with: " + report.recordingError +
                                  L"; give a recording that can be read");
            return kExitFailed;
        }
        if (!report.error.empty()) {
            PrintLine(stderr, report.directory + L": not verified: " + report.error +
                                  L"; give a directory that has the outputs of a recording");
        }
    }
    return whole ? kExitWhole : kExitFailed;
}

int PrintText(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    return Flush() ? kExitWhole : kExitFailed;
}

int ReportUsage(const std::string& what) {
    PrintLine(stderr,
              FromUtf8(std::string(kProgram) + ": " + what + "; see " + kProgram + " --help"));
    return kExitUsage;
}

}  // namespace

int RunInspectCommand(const std::vector<std::string>& arguments) {
    CLI::App app("", kProgram);
    InspectOptions options;
    Declare(app, options);
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        CoverBrackets(reversed);
        app.parse(reversed);
    } catch (const CLI::CallForHelp&) {
        return PrintText(app.help());
    } catch (const CLI::CallForVersion&) {
        return PrintText(VersionLine());
    } catch (const CLI::ParseError& error) {
        if (const auto given = app.get_subcommands(); !given.empty()) {
            return ReportUsage(DescribeUsageError(*given.front(), error));
        }
        if (!app.remaining().empty()) return ReportUsage(DescribeUsageError(app, error));
        return ReportUsage(
            "give a subcommand: info FILE..., verify DIRECTORY..., report FILE... or plot FILE...");
    }
    if (app.got_subcommand("report")) return ShowReport(options.report);
    if (app.got_subcommand("plot")) return ShowPlot(options.plot);
    return app.got_subcommand("verify") ? ShowVerify(options.verify) : ShowInfo(options.info);
}

void VisitInspectOptions(const std::function<void(const CLI::App&)>& visit) {
    CLI::App app("", kProgram);
    InspectOptions options;
    Declare(app, options);
    visit(app);
}

}  // namespace stalwick
