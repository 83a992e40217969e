// SPDX-License-Identifier: BSD-3-Clause
#include "ord/recording_header.h"

#include <locale>
#include <sstream>
#include <type_traits>
#include <vector>

#include "ord/header_fields.h"
#include "ord/ord_format.h"

namespace stalwick {

namespace {

std::wstring TakenAs(double value) {
    std::wostringstream text;
    text.imbue(std::locale::classic());
    text << value;
    return text.str();
}

template <typename Integer>
std::wstring TakenAs(Integer value) {
    return std::to_wstring(value);
}

// The text of the header being read, and where a missing field is reported.
struct HeaderLookup {
    const std::wstring& text;
    std::wstring& errorMessage;
    std::vector<UnreadableNumber>& unreadableNumbers;

    template <typename Target>
    bool Read(const std::wstring& key, Target& target) const {
        const std::vector<HeaderTokens> lines = GetHeaderFieldValues(text, key);
        if (lines.empty() || lines.front().empty()) {
            errorMessage = L"Error retrieving header field " + key;
            return false;
        }
        // A value that cannot be read is not an error: the field exists.
        const bool converted = ConvertToken(lines.front().front(), target);
        if constexpr (std::is_arithmetic_v<Target>) {
            if (!converted) unreadableNumbers.push_back({key, TakenAs(target)});
        }
        return true;
    }
};

bool ReadsAsOne(const std::wstring& token, std::int32_t& scratch) {
    ConvertToken(token, scratch);
    return scratch == 1;
}

void ReadAcquisitionSystem(const std::wstring& text, RecordingHeader& header) {
    const auto lines = GetHeaderFieldValues(text, L"-AcquisitionSystem");
    if (!lines.empty() && lines.front().size() > 1) header.acquisitionSystem = lines.front()[1];
}

// The ultrasonic flag uses the first of any number of values, the inertial ones need exactly one;
// and the number is not reset between them. Do not change either (pinned by
// ORDFileReader.TwoValuesLeaveAnInertialFlagUnchanged).
void ReadAvailabilityFlags(const std::wstring& text, RecordingHeader& header) {
    std::int32_t scratch = 0;
    const auto ultrasonic = GetHeaderFieldValues(text, L"-UltrasonicAvailable");
    if (!ultrasonic.empty() && !ultrasonic.front().empty()) {
        header.ultrasonicAvailable = ReadsAsOne(ultrasonic.front().front(), scratch);
    }
    const auto base = GetHeaderFieldValues(text, L"-BaseIMUAvailable");
    if (!base.empty() && base.front().size() == 1) {
        header.baseImuAvailable = ReadsAsOne(base.front().front(), scratch);
    }
    const auto afe = GetHeaderFieldValues(text, L"-AfeIMUAvailable");
    if (!afe.empty() && afe.front().size() == 1) {
        header.afeImuAvailable = ReadsAsOne(afe.front().front(), scratch);
    }
}

}  // namespace

std::int32_t ReadRecordingHeader(const std::wstring& headerText, RecordingHeader& header,
                                 std::wstring& errorMessage) {
    header.unreadableNumbers.clear();
    const HeaderLookup lookup{headerText, errorMessage, header.unreadableNumbers};
    if (!lookup.Read(L"-NumADChannels", header.numADChannels) ||
        !lookup.Read(L"-SamplingFrequency", header.samplingFrequency) ||
        !lookup.Read(L"-ADMaxValue", header.adMaxValue) ||
        !lookup.Read(L"-ADBitVolts", header.adBitVolts) ||
        !lookup.Read(L"-InputRange", header.inputRange) ||
        !lookup.Read(L"-FileVersion", header.fileVersion)) {
        return -1;
    }
    if (VersionStringToNumber(header.fileVersion) >= kFirstTimestampVersion &&
        !lookup.Read(L"-UTCOffsetMicroseconds", header.utcOffsetMicroseconds)) {
        return -1;
    }
    // Only this optional field leaves its message if it is missing (pinned by
    // ORDFileReader.MissingSessionUuidLeavesItsMessage): another one is read as the next line does.
    header.sessionUuid.clear();
    lookup.Read(L"-SessionUUID", header.sessionUuid);
    ReadAcquisitionSystem(headerText, header);
    ReadAvailabilityFlags(headerText, header);
    return 0;
}

DecodeOptions PacketDecodeOptions(const RecordingHeader& header) {
    return PacketFormat{0, VersionStringToNumber(header.fileVersion)};
}

}  // namespace stalwick
