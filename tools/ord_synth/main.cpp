// SPDX-License-Identifier: BSD-3-Clause
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/ord_synth/damage.h"
#include "tools/ord_synth/recording_file.h"
#include "tools/ord_synth/synth_options.h"
#include "tools/ord_synth/synth_truth.h"

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

struct CommandLine {
    stalwick::SynthOptions options;
    std::string seconds = "1";
    std::string fileVersion = "2.0";
    std::optional<std::string> mask;
    std::optional<std::string> flat;
    std::optional<std::string> clipped;
    std::optional<std::string> noisy;
    std::vector<std::string> gaps;
    std::vector<std::string> flips;
    std::vector<std::string> inserts;
    std::vector<std::string> drops;
    std::optional<std::uint64_t> cut;
    std::string truth;
    std::string output;
    bool noTtl = false;
    bool everything = false;
    bool force = false;
    bool quiet = false;
    bool stats = false;
};

// CLI11 itself reads a number beyond the type as the type's largest.
template <typename T>
CLI::Validator WholeNumberOf() {
    return CLI::Validator(
        [](const std::string& text) {
            T value = 0;
            const char* end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, value);
            return error == std::errc() && stop == end ? std::string()
                                                       : text + " is not a whole number in range";
        },
        "");
}

void AddSignalOptions(CLI::App& app, CommandLine& line) {
    auto& options = line.options;
    app.add_option("-c,--channels", options.channelCount, "A/D channels: 32, 64, 128 or 256")
        ->check(CLI::IsMember({32, 64, 128, 256}))
        ->capture_default_str();
    app.add_option("-s,--seconds", line.seconds, "Length in seconds; fractions are allowed")
        ->capture_default_str();
    app.add_option("-r,--rate", options.samplingFrequency,
                   "Samples per second and channel, 1000 to 100000")
        ->check(CLI::Range(1000u, 100000u))
        ->capture_default_str();
    app.add_option("--noise", options.noiseSteps,
                   "RMS of the noise in steps of the 14-bit converter, 0 to 1000")
        ->check(CLI::Range(0u, 1000u))
        ->capture_default_str();
    const auto addFault = [&](const char* name, std::optional<std::string>& list,
                              const char* help) {
        app.add_option(name, list, help)->type_name("CHANNELS");
    };
    addFault("--flat", line.flat, "These channels, as in 0-15,20, have one value all the time");
    addFault("--clipped", line.clipped, "These are cut at the upper end of the converter's range");
    addFault("--noisy", line.noisy, "These have additional noise of 1500 steps");
    app.add_option("--seed", options.seed, "The same seed and options produce the same bytes")
        ->check(WholeNumberOf<std::uint64_t>())
        ->capture_default_str();
}

void AddContentOptions(CLI::App& app, CommandLine& line) {
    auto& options = line.options;
    app.add_option("--file-version", line.fileVersion,
                   "1.0, or 2.0 with a hardware timestamp in every packet")
        ->check(CLI::IsMember({"1.0", "2.0"}))
        ->capture_default_str();
    app.add_option(
        "--mask", line.mask,
        "Record only these channels, as in 0-15,20: puts a channel mask into the packets");
    app.add_flag("--per-sample-states", options.perSampleStates,
                 "A state byte for every sample instead of one per packet");
    app.add_flag("--no-ttl", line.noTtl, "No TTL pulses: the inputs stay low");
    app.add_flag("--base-imu", options.baseImu, "Add the base unit's inertial values");
    app.add_flag("--afe-imu", options.afeImu, "Add the front-end unit's inertial values");
    app.add_flag("--ultrasonic", options.ultrasonic, "Add ultrasonic values");
    app.add_flag("--all", line.everything, "Both inertial units and ultrasonic values");
    app.add_option("--gap", line.gaps,
                   "Lose the packets of LENGTH seconds from second AT on; may be repeated")
        ->type_name("AT:LENGTH")
        ->allow_extra_args(false)
        ->take_all();
    app.add_option("--utc-offset", options.utcOffsetMicroseconds,
                   "Microseconds from the recording's clock to UTC (version 2.0)")
        ->check(WholeNumberOf<std::int64_t>())
        ->capture_default_str();
}

void AddDamageOptions(CLI::App& app, CommandLine& line) {
    const auto add = [&](const char* name, std::vector<std::string>& places, const char* help,
                         const char* type) {
        app.add_option(name, places, help)->type_name(type)->allow_extra_args(false)->take_all();
    };
    add("--flip", line.flips, "Flip a bit (0 to 7) of this byte of the file; may be repeated",
        "BYTE:BIT");
    add("--insert", line.inserts, "Insert random bytes before this one; may be repeated",
        "BYTE:COUNT");
    add("--drop-bytes", line.drops, "Leave out bytes from this one on; may be repeated",
        "BYTE:COUNT");
    app.add_option("--cut", line.cut, "End the file before this byte")
        ->type_name("BYTE")
        ->check(WholeNumberOf<std::uint64_t>());
    app.add_option("--drift", line.options.driftPpm,
                   "Parts per million by which the real rate is above the header's, -1000 to 1000")
        ->check(CLI::Range(-1000, 1000))
        ->capture_default_str();
    app.add_option("--first-timestamp", line.options.firstTimestampNs,
                   "Nanoseconds of the first packet's timestamp")
        ->check(WholeNumberOf<std::uint64_t>())
        ->capture_default_str();
    app.add_option("--repeat-stamp", line.options.repeatedStamps,
                   "This packet (from 0, lost ones counted) repeats the previous timestamp; "
                   "may be repeated")
        ->type_name("PACKET")
        ->allow_extra_args(false)
        ->take_all()
        ->check(WholeNumberOf<std::uint64_t>());
    app.add_option("--truth", line.truth,
                   "Write the missing and damaged parts to this file, as JSON")
        ->type_name("FILE");
}

void AddOutputOptions(CLI::App& app, CommandLine& line) {
    app.add_option("-o,--output", line.output, "The recording to make")
        ->type_name("FILE")
        ->required();
    app.add_flag("-f,--force", line.force, "Replace the file if it exists");
    app.add_flag("-q,--quiet", line.quiet, "Print nothing on success");
    app.add_flag("--stats", line.stats, "Print how often each delta width occurs");
}

bool ParseGap(const std::string& text, std::uint32_t rate, stalwick::SynthGap& gap) {
    const std::size_t colon = text.find(':');
    std::uint64_t at = 0;
    std::uint64_t length = 0;
    if (colon == std::string::npos ||
        !stalwick::ParseSecondsToMicroseconds(text.substr(0, colon), at) ||
        !stalwick::ParseSecondsToMicroseconds(text.substr(colon + 1), length) || length == 0) {
        return false;
    }
    gap.firstLostPacket = at == 0 ? 0 : stalwick::PacketsInMicroseconds(at, rate);
    gap.lostPackets = stalwick::PacketsInMicroseconds(length, rate);
    return true;
}

std::string AddDamage(const std::vector<std::string>& places, stalwick::SynthDamage::Kind kind,
                      stalwick::SynthOptions& options) {
    for (const std::string& text : places) {
        stalwick::SynthDamage damage{kind, 0, 0};
        const bool isFlip = kind == stalwick::SynthDamage::Kind::kFlip;
        if (!stalwick::ParseDamagePlace(text, damage) ||
            (isFlip ? damage.count > 7 : damage.count == 0)) {
            return text + (isFlip ? " is not BYTE:BIT, such as 20000:7"
                                  : " is not BYTE:COUNT, such as 20000:512");
        }
        options.damage.push_back(damage);
    }
    return {};
}

std::string CompleteDamage(CommandLine& line) {
    using Kind = stalwick::SynthDamage::Kind;
    auto& options = line.options;
    std::string wrong = AddDamage(line.flips, Kind::kFlip, options);
    if (wrong.empty()) wrong = AddDamage(line.inserts, Kind::kInsert, options);
    if (wrong.empty()) wrong = AddDamage(line.drops, Kind::kDropBytes, options);
    if (line.cut) options.damage.push_back({Kind::kCut, *line.cut, 0});
    return wrong.empty() ? stalwick::OrderDamage(options.damage) : wrong;
}

// Returns an empty text, or what failed.
std::string WriteTruth(const CommandLine& line, const stalwick::SynthSummary& summary) {
    if (line.truth.empty()) return {};
    const std::string text = stalwick::DescribeTruth(line.options, summary);
    std::FILE* const file = std::fopen(line.truth.c_str(), line.force ? "wb" : "wbx");
    if (file == nullptr) return "cannot create " + line.truth + "; --force replaces a file";
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const bool closed = std::fclose(file) == 0;
    return written && closed ? std::string() : "cannot write " + line.truth;
}

// Returns an empty text, or what is wrong with the list.
std::string ReadChannels(const char* name, const std::optional<std::string>& text,
                         std::uint32_t channelCount, std::vector<std::uint32_t>& channels) {
    if (!text || stalwick::ParseChannelList(*text, channelCount, channels)) return {};
    return std::string(name) + ": " + *text + " is not a list such as 0-15,20 of channels below " +
           std::to_string(channelCount);
}

std::string CompleteChannels(CommandLine& line) {
    auto& options = line.options;
    const std::uint32_t count = options.channelCount;
    std::string wrong = ReadChannels("--mask", line.mask, count, options.enabledChannels);
    if (wrong.empty()) wrong = ReadChannels("--flat", line.flat, count, options.flatChannels);
    if (wrong.empty()) {
        wrong = ReadChannels("--clipped", line.clipped, count, options.clippedChannels);
    }
    if (wrong.empty()) wrong = ReadChannels("--noisy", line.noisy, count, options.noisyChannels);
    return wrong;
}

// Returns an empty text, or what is wrong with an option.
std::string CompleteOptions(CommandLine& line) {
    auto& options = line.options;
    std::uint64_t microseconds = 0;
    if (!stalwick::ParseSecondsToMicroseconds(line.seconds, microseconds) || microseconds == 0) {
        return "--seconds: " + line.seconds + " is not a length such as 1, 0.5 or 12.25";
    }
    options.packetCount = stalwick::PacketsInMicroseconds(microseconds, options.samplingFrequency);
    options.hardwareTimestamps = line.fileVersion == "2.0";
    options.ttl = !line.noTtl;
    if (line.everything) options.baseImu = options.afeImu = options.ultrasonic = true;
    if (const std::string wrong = CompleteChannels(line); !wrong.empty()) return wrong;
    for (const std::string& text : line.gaps) {
        stalwick::SynthGap gap;
        if (!ParseGap(text, options.samplingFrequency, gap)) {
            return "--gap: " + text + " is not AT:LENGTH in seconds, such as 1.5:0.25";
        }
        if (gap.firstLostPacket == 0 || gap.firstLostPacket >= options.packetCount ||
            gap.lostPackets >= options.packetCount - gap.firstLostPacket) {
            return "--gap: " + text + " is not inside the recording";
        }
        options.gaps.push_back(gap);
    }
    return CompleteDamage(line);
}

void PrintSummary(const CommandLine& line, const stalwick::SynthSummary& summary) {
    const double bitsPerSample =
        static_cast<double>(summary.bytes) * 8.0 / static_cast<double>(summary.samples);
    std::printf("%s: %u channels, %llu packets, %llu bytes, %.2f bits a sample\n",
                line.output.c_str(), line.options.channelCount,
                static_cast<unsigned long long>(summary.packets),
                static_cast<unsigned long long>(summary.bytes), bitsPerSample);
    if (!line.stats) return;
    std::uint64_t total = 0;
    for (const std::uint64_t count : summary.widthCounts) total += count;
    for (std::size_t width = 1; width < summary.widthCounts.size(); ++width) {
        std::printf(
            "width %2zu: %6.2f %%\n", width,
            100.0 * static_cast<double>(summary.widthCounts[width]) / static_cast<double>(total));
    }
}

}  // namespace

int main(int argc, char** argv) {
    CommandLine line;
    CLI::App app(
        "Makes a wireless recording (.ord) that looks like a real one: noise, spikes and slow\n"
        "waves, TTL pulses and sensor values. For demonstrations, tests and benchmarks.",
        "ord_synth");
    AddOutputOptions(app, line);
    AddSignalOptions(app, line);
    AddContentOptions(app, line);
    AddDamageOptions(app, line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kExitUsage;
    }
    if (const std::string wrong = CompleteOptions(line); !wrong.empty()) {
        std::fprintf(stderr, "ord_synth: %s\n", wrong.c_str());
        return kExitUsage;
    }
    stalwick::SynthSummary summary;
    std::string failure =
        stalwick::WriteRecordingFile(line.options, line.output, line.force, summary);
    if (failure.empty()) failure = WriteTruth(line, summary);
    if (!failure.empty()) {
        std::fprintf(stderr, "ord_synth: %s\n", failure.c_str());
        return kExitFailed;
    }
    if (!line.quiet) PrintSummary(line, summary);
    return 0;
}
