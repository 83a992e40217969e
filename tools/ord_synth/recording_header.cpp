// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/recording_header.h"

#include "tools/ord_synth/integer_random.h"

namespace stalwick {

namespace {

// 3190 uV over the 65536 steps of a sample that was shifted up to 16 bits.
constexpr const char* kBitVolts = "0.000000048675537109375";
constexpr const char* kInputRangeMicrovolts = "1595";

std::string HexDigits(std::uint64_t value, int digits) {
    std::string text;
    for (int i = digits - 1; i >= 0; --i) text += "0123456789abcdef"[(value >> (4 * i)) & 15];
    return text;
}

std::string SessionUuid(std::uint64_t seed) {
    IntegerRandom random = MakeRandom(seed, RandomStream::kSession);
    const std::uint64_t high = (random.Next() & ~0xF000ull) | 0x4000ull;       // version 4
    const std::uint64_t low = (random.Next() & ~(3ull << 62)) | (1ull << 63);  // variant 1
    return HexDigits(high >> 32, 8) + "-" + HexDigits(high >> 16, 4) + "-" + HexDigits(high, 4) +
           "-" + HexDigits(low >> 48, 4) + "-" + HexDigits(low, 12);
}

}  // namespace

std::string MakeRecordingHeader(const SynthOptions& options) {
    std::string text = "## Synthetic wireless raw data, made by ord_synth\r\n";
    const auto line = [&text](const char* key, const std::string& value) {
        text += std::string("-") + key + " " + value + "\r\n";
    };
    line("FileVersion", options.hardwareTimestamps ? "2.0" : "1.0");
    line("SessionUUID", SessionUuid(options.seed));
    line("AcquisitionSystem",
         "\"Wireless Headstage\" Synth" + std::to_string(options.channelCount));
    line("NumADChannels", std::to_string(options.channelCount));
    line("SamplingFrequency", std::to_string(options.samplingFrequency));
    line("ADMaxValue", "32767");
    line("ADBitVolts", kBitVolts);
    line("InputRange", kInputRangeMicrovolts);
    if (options.hardwareTimestamps) {
        line("UTCOffsetMicroseconds", std::to_string(options.utcOffsetMicroseconds));
    }
    line("BaseIMUAvailable", options.baseImu ? "1" : "0");
    line("AfeIMUAvailable", options.afeImu ? "1" : "0");
    line("UltrasonicAvailable", options.ultrasonic ? "1" : "0");
    line("SynthSeed", std::to_string(options.seed));
    text.resize(kSynthHeaderBytes, '\0');
    return text;
}

}  // namespace stalwick
