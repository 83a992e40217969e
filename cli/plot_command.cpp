// SPDX-License-Identifier: BSD-3-Clause
#include "cli/plot_command.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>
#include <system_error>

#include <CLI/CLI.hpp>

#include "cli/argument_brackets.h"
#include "cli/exit_status.h"
#include "cli/picture_file.h"
#include "cli/print_line.h"
#include "ord/ord_format.h"
#include "platform/text_encoding.h"
#include "survey/channel_list.h"
#include "survey/ord_traces.h"
#include "survey/output_traces.h"
#include "survey/trace_layout.h"
#include "survey/trace_picture.h"

namespace stalwick {

namespace {

constexpr double kMost = 1e9;

std::optional<double> ReadNumber(const std::string& text) {
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    if (error != std::errc() || stop != end || !(value >= 0.0 && value <= kMost)) {
        return std::nullopt;
    }
    return value;
}

// A number such as 12.5, up to 1000000000.
CLI::Validator Number(bool mayBeZero, const std::string& what) {
    return CLI::Validator(
        [=](const std::string& text) {
            const auto value = ReadNumber(text);
            if (value && (mayBeZero || *value > 0.0)) return std::string();
            return text + " is not a number of " + what +
                   (mayBeZero ? " from 0 to 1000000000" : " above 0, at most 1000000000");
        },
        "");
}

CLI::Validator ChannelList() {
    return CLI::Validator(
        [](const std::string& text) {
            if (ReadChannelList(text, kMostADChannels)) return std::string();
            return text + " is not a list of channels from 1 to 256, such as 1-16,33";
        },
        "");
}

bool IsOutput(const std::string& path) {
    return path.ends_with(".vcs") || path.ends_with(".vev");
}

int Refuse(const std::wstring& why) {
    PrintLine(stderr, L"stalwick-inspect: " + why);
    return kExitUsage;
}

std::string TitleOf(const std::vector<std::string>& files) {
    std::string title = files.front().substr(files.front().find_last_of('/') + 1);
    if (files.size() == 1) return title;
    const std::size_t more = files.size() - 1;
    return title + " and " + std::to_string(more) + (more == 1 ? " more file" : " more files");
}

TraceRequest RequestOf(const PlotOptions& options) {
    TraceRequest request;
    for (const std::string& file : options.files) request.paths.push_back(FromUtf8(file));
    request.startSeconds = ReadNumber(options.start).value_or(0.0);
    request.seconds = ReadNumber(options.seconds);
    if (const auto channels = ReadChannelList(options.channels, kMostADChannels)) {
        request.channels = *channels;
    }
    request.columns = kTraceColumns;
    return request;
}

int ReportError(const TraceError& error) {
    if (error.kind == TraceError::Kind::kRequest) return Refuse(error.text);
    PrintLine(stderr, error.text);
    return kExitFailed;
}

}  // namespace

void DeclarePlot(CLI::App& app, PlotOptions& options) {
    app.option_defaults()->disable_flag_override();
    app.add_option("FILE", options.files,
                   "a recording (.ord); or channel files (.vcs) of one set, and its event file "
                   "(.vev) for the TTL lines")
        ->type_name("FILE.ord|.vcs")
        ->required();
    app.add_option("-o,--output", options.picture,
                   "the picture to write, .svg or .png; replaces only an earlier picture of that "
                   "name")
        ->type_name("PICTURE")
        ->required();
    app.add_option("--start", options.start,
                   "start of the stretch, in seconds from the first sample")
        ->type_name("SECONDS")
        ->check(Number(true, "seconds"))
        ->capture_default_str();
    app.add_option("--seconds", options.seconds, "length of the stretch; default: to the end")
        ->type_name("SECONDS")
        ->check(Number(false, "seconds"));
    app.add_option("--channels", options.channels,
                   "A/D channels to draw, such as 1-16,33; default: all that have samples")
        ->type_name("LIST")
        ->check(ChannelList());
    app.add_option("--spacing", options.spacing,
                   "microvolts between rows; default: chosen from the traces")
        ->type_name("MICROVOLTS")
        ->check(Number(false, "microvolts"));
    app.footer(
        "Exit status: 0 drawn; 1 a FILE cannot be read or the picture cannot be written; 2 wrong\n"
        "usage; 3 drawn, and the stretch holds damage.");
    UncoverBrackets(app);
}

int ShowPlot(const PlotOptions& options) {
    const std::wstring picture = FromUtf8(options.picture);
    if (const std::wstring refusal = RefusePictureName(picture); !refusal.empty()) {
        return Refuse(refusal);
    }
    const bool areOutputs = std::all_of(options.files.begin(), options.files.end(), IsOutput);
    if (!areOutputs && options.files.size() != 1) {
        return Refuse(
            L"give plot one recording, or channel files (.vcs) and event file (.vev) of one set");
    }
    const TraceRequest request = RequestOf(options);
    const TraceSet set = areOutputs ? ReadOutputTraces(request) : ReadOrdTraces(request);
    for (const std::wstring& warning : set.warnings) PrintLine(stderr, warning);
    if (set.error) return ReportError(set.error);
    const std::string svg =
        PaintTraces(set, {TitleOf(options.files), ReadNumber(options.spacing), "plot"});
    if (const std::wstring fault = WritePicture(picture, svg); !fault.empty()) {
        PrintLine(stderr, L"stalwick-inspect: " + fault);
        return kExitFailed;
    }
    if (set.lostData) return kExitFailed;
    return set.damage.empty() ? kExitWhole : kExitLosses;
}

}  // namespace stalwick
