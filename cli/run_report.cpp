// SPDX-License-Identifier: BSD-3-Clause
#include "cli/run_report.h"

#include <cstdio>

#include <nlohmann/json.hpp>

#include "cli/report_file.h"
#include "page/time_json.h"
#include "platform/paths.h"
#include "platform/program_version.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

using Json = nlohmann::ordered_json;
using Kind = ConversionDetail::Kind;

constexpr int kFormatVersion = 1;

Json TextOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

const char* NameOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::kWhole:
            return "whole";
        case Verdict::kPassedOver:
            return "passed_over";
        case Verdict::kWithLosses:
            return "with_losses";
        case Verdict::kCanceled:
            return "canceled";
        case Verdict::kNotBegun:
            return "not_begun";
        default:
            return "failed";
    }
}

// All options except --report itself and those that only concern how a run is shown and how fast it
// is: --quiet, --jobs. docs/report.schema.json lists the same keys; cli/earlier_report.cpp reads
// some of them.
Json OptionsOf(const CommandLine& line) {
    const auto isOn = [&](ChannelGroup group) {
        return line.channelOptions[static_cast<std::size_t>(group)] != 0;
    };
    return {{"output_directory", TextOrNull(ToUtf8(line.outputDirectory))},
            {"csc", isOn(ChannelGroup::kAD)},
            {"base_imu", isOn(ChannelGroup::kBaseIMU)},
            {"afe_imu", isOn(ChannelGroup::kAfeIMU)},
            {"ultrasonic", isOn(ChannelGroup::kUltrasonic)},
            {"raw", line.writeRawData},
            {"keep_going", line.keepGoing},
            {"keep_partial", line.outputSettings.keepPartialBlocks},
            {"salvage", line.outputSettings.onDamage == OnDamage::kSkip},
            {"skip_converted", line.skipConverted},
            {"sync", line.outputSettings.syncBeforeFinalHeader},
            {"checksum", line.checksum},
            {"page", line.page}};
}

Json LossesOf(const ConversionAccount& account) {
    Json losses = Json::array();
    for (const ConversionDetail& detail : account.details) {
        if (detail.kind == Kind::kLoss) losses.push_back(ToUtf8(detail.text));
    }
    return losses;
}

// All details except losses.
Json DetailsOf(const ConversionAccount& account) {
    Json details = Json::array();
    for (const ConversionDetail& detail : account.details) {
        if (detail.kind == Kind::kLoss) continue;
        details.push_back({{"kind", detail.kind == Kind::kNote ? "note" : "incomplete"},
                           {"text", ToUtf8(detail.text)}});
    }
    return details;
}

Json OutputsOf(const RecordingOutcome& outcome) {
    Json outputs = Json::array();
    for (std::size_t i = 0; i < outcome.account.outputs.size(); ++i) {
        const OutputAccount& output = outcome.account.outputs[i];
        const PathParts parts = SplitPath(output.path);
        const auto& sums = outcome.checksums.outputs;
        outputs.push_back({{"name", ToUtf8(parts.name + parts.extension)},
                           {"records", output.records},
                           {"bytes", output.bytes},
                           {"sha256", i < sums.size() ? TextOrNull(sums[i]) : Json(nullptr)}});
    }
    return outputs;
}

void AddTime(const ConversionAccount& account, Json& entry) {
    const bool known = account.time.has_value();
    const TimeAccount time = account.time.value_or(TimeAccount{});
    const auto add = [&](const char* key, const Json& value) {
        entry[key] = known ? value : Json(nullptr);
    };
    add("measured_rate", time.measuredRate ? Json(*time.measuredRate) : Json(nullptr));
    add("drift_ppm", time.driftPpm ? Json(*time.driftPpm) : Json(nullptr));
    add("gaps", GapsAsJson(time));
    add("missing_samples", time.missingSamples);
    add("gap_seconds", time.gapSeconds);
    add("repeated_timestamps", time.repeatedTimestamps);
    add("short_steps", time.shortSteps);
    add("backward_timestamps", BackwardTimestampsAsJson(time));
}

Json RecordingEntry(const PlannedRecording& recording, const RecordingOutcome& outcome,
                    const CommandLine& options) {
    const ConversionAccount& account = outcome.account;
    // For a skipped recording, packets and time are unknown.
    const bool converted = account.outputFiles != 0 && !outcome.passedOver;
    Json entry;
    entry["path"] = ToUtf8(recording.path);
    entry["bytes"] = outcome.file.bytes;
    entry["modified"] =
        outcome.file.modified ? Json(FormatReportTime(*outcome.file.modified)) : Json(nullptr);
    entry["sha256"] = TextOrNull(outcome.checksums.recording);
    entry["result"] = NameOf(VerdictOf(outcome));
    entry["status"] = TextOrNull(ToUtf8(outcome.status));
    entry["packets"] = converted ? Json(account.packets) : Json(nullptr);
    entry["duration_seconds"] = converted ? Json(account.durationSeconds) : Json(nullptr);
    AddTime(account, entry);
    const bool salvaged = converted && options.outputSettings.onDamage == OnDamage::kSkip;
    entry["damage"] = salvaged ? DamageAsJson(account.skipped) : Json(nullptr);
    entry["losses"] = LossesOf(account);
    entry["details"] = DetailsOf(account);
    entry["directory"] = TextOrNull(ToUtf8(account.outputDirectory));
    entry["outputs"] = OutputsOf(outcome);
    return entry;
}

}  // namespace

std::string FormatReportTime(std::chrono::system_clock::time_point time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const auto day = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(seconds - day);
    const auto rest = std::chrono::floor<std::chrono::microseconds>(time - seconds);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(rest.count()));
    return text;
}

std::string FormatRunReport(const RunReport& report) {
    constexpr int kIndent = 2;
    Json document;
    document["report_of"] = "stalwick-convert";  // kReportBeginning
    document["format_version"] = kFormatVersion;
    document["version"] = kVersion;
    document["started"] = FormatReportTime(report.started);
    document["ended"] = FormatReportTime(report.ended);
    document["status"] = ToUtf8(report.status);
    document["exit_status"] = report.exitStatus;
    document["options"] = OptionsOf(report.commandLine);
    Json& recordings = document["recordings"] = Json::array();
    for (std::size_t i = 0; i < report.recordings->size(); ++i) {
        recordings.push_back(
            RecordingEntry((*report.recordings)[i], (*report.outcomes)[i], report.commandLine));
    }
    // A file name may have bytes that are not text.
    return document.dump(kIndent, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace stalwick
