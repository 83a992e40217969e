// SPDX-License-Identifier: BSD-3-Clause

// Finding and converting header fields, compared with the patterns that they implement.

#include "fuzz/fuzz_target.h"
#include "ord/header_fields.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_header.h"

namespace stalwick::fuzz {

namespace {

// The reference recurses for every character, and the time of a version's pattern doubles with
// each.
constexpr std::size_t kMostReferenceCharacters = 300;
constexpr std::size_t kMostReferenceVersion = 12;

const wchar_t* const kKeys[] = {L"-NumADChannels",
                                L"-SamplingFrequency",
                                L"-ADMaxValue",
                                L"-ADBitVolts",
                                L"-InputRange",
                                L"-FileVersion",
                                L"-SessionUUID",
                                L"-AcquisitionSystem",
                                L"-UTCOffsetMicroseconds",
                                L"-AfeIMUAvailable",
                                L"-UltrasonicAvailable",
                                L"-BaseIMUAvailable",
                                L"-A",
                                L"-"};

void ConvertEveryWay(const std::wstring& token) {
    std::uint32_t unsigned32 = 0;
    std::int32_t signed32 = 0;
    std::int64_t signed64 = 0;
    double real = 0.0;
    std::wstring word;
    ConvertToken(token, unsigned32);
    ConvertToken(token, signed32);
    ConvertToken(token, signed64);
    ConvertToken(token, real);
    ConvertToken(token, word);
    Require(word.size() <= token.size(), "a word longer than its token");
    const std::int32_t version = VersionStringToNumber(token);
    Require(version >= -1, "a version number below -1");
    if (token.size() > kMostReferenceVersion) return;
    Require(version == test::ReferenceVersionNumber(token), "another version number");
}

}  // namespace

std::vector<std::string> MakeSeeds() {
    std::vector<std::string> seeds = {test::Version1Header(32).Text(),
                                      test::Version2Header(256).SetLineEnd("\n").Text()};
    for (const char* line : {"\n-ADBitVolts 0.000000061 6.1e-8 # volts", "\n-FileVersion \"2.0 b\"",
                             "\n-AcquisitionSystem \"a b\" X", "\n-FileVersion 1.10", "\n-A -A#-A",
                             "\n-InputRange \"\" # none", "\n-UTCOffsetMicroseconds -9e99"}) {
        seeds.emplace_back(line);
    }
    return seeds;
}

}  // namespace stalwick::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stalwick;
    const std::wstring text =
        test::ReferenceHeaderText({reinterpret_cast<const char*>(data), size});
    for (const wchar_t* key : fuzz::kKeys) {
        const std::vector<HeaderTokens> lines = GetHeaderFieldValues(text, key);
        for (const HeaderTokens& tokens : lines) {
            for (const std::wstring& token : tokens) fuzz::ConvertEveryWay(token);
        }
        if (text.size() > fuzz::kMostReferenceCharacters) continue;
        fuzz::Require(lines == test::ReferenceHeaderFieldValues(text, key), "other header lines");
    }
    fuzz::ConvertEveryWay(text);
    return 0;
}
