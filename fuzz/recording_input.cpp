#include "fuzz/recording_input.h"

#include <span>

#include "ord/header_fields.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_header.h"
#include "tools/ord_synth/recording_synth.h"

namespace stalwick::fuzz {

namespace {

constexpr std::uint8_t kBareHeader = 0x80;
constexpr std::uint8_t kVersion1 = 0x80;  // of the channels byte
constexpr unsigned kMostChannels = 32;    // more take more time, not other ways

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
                        static_cast<char>(lines.size())};
    return seed.append(lines) + stream;
}

}  // namespace

RecordingInput ReadRecordingInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    RecordingInput result;
    result.options = input.TakeByte();
    const std::uint8_t channels = input.TakeByte();
    const std::size_t lineBytes = input.TakeByte();
    std::string text("\n");
    text += input.Take(lineBytes);
    if ((result.options & kBareHeader) == 0) {
        const unsigned count = channels % (kMostChannels + 1);
        const bool version1 = (channels & kVersion1) != 0;
        text += "\r\n";
        text += (version1 ? test::Version1Header(count) : test::Version2Header(count)).Text();
    }
    text.resize(test::kOrdHeaderBytes);
    result.recording = text;
    result.recording += input.TakeAll();
    return result;
}

bool SuitsTheReference(const std::string& recording) {
    constexpr std::size_t kMostCharacters = 1000;  // its stack grows with each
    constexpr std::size_t kMostVersion = 12;       // its time doubles with each
    const std::wstring text = test::ReferenceHeaderText(recording.substr(0, test::kOrdHeaderBytes));
    if (text.size() > kMostCharacters) return false;
    for (const HeaderTokens& tokens : GetHeaderFieldValues(text, L"-FileVersion")) {
        for (const std::wstring& token : tokens) {
            if (token.size() > kMostVersion) return false;
        }
    }
    return true;
}

std::vector<std::string> MakeRecordingSeeds(std::uint8_t options) {
    std::vector<std::string> seeds;
    for (unsigned kind = 0; kind < 8; ++kind) {
        SynthOptions synth;
        synth.channelCount = 32;
        synth.packetCount = 6;
        synth.seed = kind + 1;
        synth.hardwareTimestamps = kind % 2 == 0;
        synth.perSampleStates = kind % 3 == 0;
        synth.baseImu = synth.afeImu = synth.ultrasonic = kind >= 4;
        if (kind == 5) synth.enabledChannels = {0, 7, 31};
        if (kind == 7) synth.channelCount = 64;
        const std::uint8_t channels = synth.hardwareTimestamps ? 8 : 8 | kVersion1;
        const char* lines = kind < 4 ? ""
                                     : "-BaseIMUAvailable 1\n-AfeIMUAvailable 1\n"
                                       "-UltrasonicAvailable 1";
        seeds.push_back(Seed(options, channels, lines, StreamOf(synth)));
    }
    SynthOptions oneChannel;
    oneChannel.channelCount = 32;
    oneChannel.enabledChannels = {3};
    oneChannel.packetCount = 3000;  // more than one block of data
    seeds.push_back(Seed(options, 1, "-SamplingFrequency 4294967295", StreamOf(oneChannel)));
    oneChannel.packetCount = 60;  // more than one record of 512 samples
    seeds.push_back(Seed(options, 4, "-UTCOffsetMicroseconds -1", StreamOf(oneChannel)));
    seeds.push_back(Seed(options | kBareHeader, 0, "-NumADChannels 257", {}));
    return seeds;
}

}  // namespace stalwick::fuzz
