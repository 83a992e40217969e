// SPDX-License-Identifier: BSD-3-Clause

// What a conversion reports about its recording: contradictions between its header, its packets and
// the requested outputs.

#include <string>

#include "engine/file_conversion.h"
#include "ord/header_fields.h"
#include "platform/text_encoding.h"
#include "writers/timestamps.h"

namespace stalwick {

using Kind = ConversionDetail::Kind;

namespace {

// "channel 3", "channels 3 to 7".
std::wstring ChannelRange(std::uint32_t first, std::uint32_t last) {
    if (first == last) return L"channel " + std::to_wstring(first);
    return L"channels " + std::to_wstring(first) + L" to " + std::to_wstring(last);
}

}  // namespace

void FileConversion::ReportHeader() {
    const RecordingHeader& header = source_->Header();
    for (const UnreadableNumber& number : header.unreadableNumbers) {
        AddInputDetail(Kind::kNote, L"its header's " + number.key +
                                        L" cannot be read as a number and counts as " +
                                        number.takenAs + L"; correct it in a copy");
    }
    if (VersionStringToNumber(header.fileVersion) < 0) {
        AddInputDetail(Kind::kNote, L"its header's -FileVersion \"" + OneLine(header.fileVersion) +
                                        L"\" cannot be read; its packets are read as ones without "
                                        L"timestamps");
    }
}

void FileConversion::ReportAbsentGroups() {
    struct Group {
        const wchar_t* name;
        const wchar_t* key;
    };
    constexpr std::array<Group, 4> kGroups = {{{L"A/D channels", L"-NumADChannels"},
                                               {L"base IMU", L"-BaseIMUAvailable"},
                                               {L"AFE IMU", L"-AfeIMUAvailable"},
                                               {L"ultrasonic sensor", L"-UltrasonicAvailable"}}};
    std::wstring absent;
    std::wstring leftOut;
    std::wstring corrections;
    const auto add = [](std::wstring& list, const std::wstring& item) {
        list += (list.empty() ? L"" : L", ") + item;
    };
    for (std::size_t i = 0; i < kGroups.size(); ++i) {
        if (request_.channelOptions[i] == 0 || switches_[i] != 0) continue;
        // Only sensors: ReportChannels covers the A/D channels that are left out.
        if (census_.Carries(static_cast<ChannelGroup>(i))) {
            add(leftOut, kGroups[i].name);
            add(corrections, kGroups[i].key + std::wstring(L" 1"));
        } else {
            add(absent, kGroups[i].name);
        }
    }
    if (!absent.empty()) {
        AddInputDetail(Kind::kNote,
                       L"its header announces none of these, so they have no files: " + absent);
    }
    if (!leftOut.empty()) {
        AddInputDetail(Kind::kLoss,
                       L"its packets carry data that its header does not announce, so these "
                       L"were left out: " +
                           leftOut + L"; set " + corrections + L" in a copy and convert the copy");
    }
}

void FileConversion::ReportSkipped() {
    const bool hasTimestamps = PacketsCarryTimestamps(PacketDecodeOptions(source_->Header()));
    for (const std::wstring& line :
         skipped_.Describe(recordPeriod_ / kMicrosecondsPerSecond, hasTimestamps)) {
        AddInputDetail(Kind::kLoss, line);
    }
}

void FileConversion::ReportPackets() {
    if (!source_->ContradictsVersion()) {
        ReportAbsentGroups();
        return ReportChannels();
    }
    const bool stated = PacketsCarryTimestamps(PacketDecodeOptions(source_->Header()));
    AddInputDetail(Kind::kLoss,
                   L"its packets contradict its header's -FileVersion " +
                       OneLine(source_->Header().fileVersion) + L": they carry " +
                       (stated ? L"no timestamps" : L"timestamps") +
                       L", so the outputs are not what was recorded; set -FileVersion " +
                       (stated ? L"1.0" : L"2.0") + L" in a copy and convert the copy");
}

void FileConversion::ReportChannels() {
    const std::uint32_t announced = source_->Header().numADChannels;
    const std::uint32_t carried = census_.MostCarried();
    const bool asked = request_.channelOptions[0] != 0 || request_.writeRawData;
    if (asked && carried > announced) {
        AddInputDetail(Kind::kLoss,
                       L"its header announces " + std::to_wstring(announced) +
                           L" A/D channels, its packets carry " + std::to_wstring(carried) + L": " +
                           ChannelRange(announced + 1, carried) + L" have no channel files" +
                           (request_.writeRawData
                                ? L", and the raw data file has longer records than its header says"
                                : L"") +
                           L"; correct -NumADChannels in a copy and convert the copy");
    }
    // A recording without packets lacks them all; that is reported in other ways.
    const std::uint32_t described = census_.MostDescribed();
    if (!asked || described == 0 || described >= announced || account_.canceled) return;
    std::wstring effect;
    if (IsOn(ChannelGroup::kAD)) {
        effect = L"the files of " + ChannelRange(described + 1, announced) + L" are empty";
    }
    if (request_.writeRawData) {
        effect += (effect.empty() ? L"" : L", and ") +
                  std::wstring(L"the raw data file has shorter records than its header says");
    }
    AddInputDetail(Kind::kNote, L"its header announces " + std::to_wstring(announced) +
                                    L" A/D channels, its packets carry " +
                                    std::to_wstring(described) + L": " + effect);
}

}  // namespace stalwick
