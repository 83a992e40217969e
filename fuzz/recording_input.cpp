// SPDX-License-Identifier: BSD-3-Clause
#include "fuzz/recording_input.h"

#include <functional>
#include <iterator>
#include <span>

#include "ord/header_fields.h"
#include "tests/support/ord_builder.h"
#include "tests/support/program_header.h"
#include "tools/ord_synth/recording_synth.h"

namespace stalwick::fuzz {

namespace {

constexpr std::uint8_t kBareHeader = 0x80;
constexpr std::uint8_t kNoPadding = 0x40;
constexpr std::uint8_t kVersion1 = 0x80;   // of the channels byte
constexpr std::size_t kHeaderBytes = 512;  // the complete header's text has 370
constexpr std::uint8_t kSensors = 0x0E;    // of the options: their outputs
constexpr std::size_t kSpanUnit = 64;
constexpr std::uint8_t kSeedSpan = 15;  // spans of 1024 bytes: a few packets of 32 channels
// One in this many recordings is also read with the patterns.
constexpr std::uint64_t kPatternShare = 16;
// More channels take more time but no new paths; packets of 32 can agree with their header.
constexpr unsigned kChannelCounts[] = {0, 1, 2, 3, 4, 6, 8, 32};

std::string HeaderFor(std::uint8_t channels) {
    const unsigned count = kChannelCounts[channels % std::size(kChannelCounts)];
    const bool version1 = (channels & kVersion1) != 0;
    return (version1 ? test::Version1Header(count) : test::Version2Header(count)).Text();
}

std::wstring HeaderTextOf(const RecordingInput& input) {
    const std::string_view recording(input.recording);
    return test::ReferenceHeaderText(recording.substr(0, input.sizes.header));
}

std::string StreamOf(const SynthOptions& options) {
    std::string bytes;
    MakeRecording(options, [&bytes](std::span<const std::uint8_t> block) {
        bytes.append(reinterpret_cast<const char*>(block.data()), block.size());
        return true;
    });
    return bytes.substr(test::kOrdHeaderBytes);
}

std::string Seed(std::uint8_t options, std::uint8_t channels, std::string_view lines,
                 const std::string& stream) {
    std::string seed = {static_cast<char>(options), static_cast<char>(channels),
                        static_cast<char>(kSeedSpan), static_cast<char>(lines.size())};
    return seed.append(lines) + stream;
}

}  // namespace

RecordingInput ReadRecordingInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    RecordingInput result;
    result.options = input.TakeByte();
    const std::uint8_t channels = input.TakeByte();
    result.sizes = {kHeaderBytes, kSpanUnit * (1U + input.TakeByte())};
    const std::size_t lineBytes = input.TakeByte();
    std::string text("\n");
    text += input.Take(lineBytes);
    if ((result.options & kBareHeader) == 0) text += "\r\n" + HeaderFor(channels);
    if ((result.options & kNoPadding) == 0) text.resize(kHeaderBytes);
    result.recording = text;
    result.recording += input.TakeAll();
    return result;
}

bool IsForThePatterns(const RecordingInput& input) {
    constexpr std::size_t kMostVersion = 12;  // their time doubles with each character
    if (std::hash<std::string>()(input.recording) % kPatternShare != 0) return false;
    for (const HeaderTokens& tokens : GetHeaderFieldValues(HeaderTextOf(input), L"-FileVersion")) {
        for (const std::wstring& token : tokens) {
            if (token.size() > kMostVersion) return false;
        }
    }
    return true;
}

test::ReferenceHeaderFields FieldsByTheProgram(const RecordingInput& input) {
    return test::ProgramHeaderFields(HeaderTextOf(input));
}

test::ReferenceHeaderFields FieldsByThePatterns(const RecordingInput& input) {
    return test::ReferenceReadHeaderFields(HeaderTextOf(input));
}

std::vector<std::string> MakeRecordingSeeds(std::uint8_t options) {
    std::vector<std::string> seeds;
    for (unsigned kind = 0; kind < 8; ++kind) {
        SynthOptions synth;
        synth.channelCount = 32;
        synth.packetCount = 4;
        synth.seed = kind + 1;
        synth.hardwareTimestamps = kind % 2 == 0;
        synth.perSampleStates = kind % 3 == 0;
        synth.baseImu = synth.afeImu = synth.ultrasonic = kind >= 4;
        if (kind == 5) synth.enabledChannels = {0, 7, 31};
        if (kind == 7) synth.channelCount = 64;
        const std::uint8_t channels = synth.hardwareTimestamps ? 3 : 3 | kVersion1;
        const char* lines = kind < 4 ? "" : "-BaseIMUAvailable 0\n-UltrasonicAvailable 1 2";
        // Eighteen empty files would only take time.
        const unsigned outputs = kind < 4 ? options & ~unsigned{kSensors} : options;
        seeds.push_back(Seed(static_cast<std::uint8_t>(outputs), channels, lines, StreamOf(synth)));
    }
    const auto outputs = static_cast<std::uint8_t>(options & ~kSensors);
    SynthOptions oneChannel;
    oneChannel.channelCount = 32;
    oneChannel.enabledChannels = {3};
    oneChannel.packetCount = 100;  // more than one span
    seeds.push_back(Seed(outputs, 1, "-SamplingFrequency 4294967295", StreamOf(oneChannel)));
    oneChannel.packetCount = 60;  // more than one record of 512 samples
    seeds.push_back(Seed(outputs, 4, "-UTCOffsetMicroseconds -1", StreamOf(oneChannel)));
    seeds.push_back(Seed(outputs | kBareHeader, 0, "-NumADChannels 257", {}));
    return seeds;
}

}  // namespace stalwick::fuzz
