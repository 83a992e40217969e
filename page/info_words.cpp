// SPDX-License-Identifier: BSD-3-Clause
#include "page/info_words.h"

namespace stalwick {

namespace {

// Where a packet that lacks its end stops.
std::wstring PlaceOfCut(PacketRefusal refusal) {
    switch (refusal) {
        case PacketRefusal::kTooShort:
            return L"its head";
        case PacketRefusal::kCutInTimestamp:
            return L"its timestamp";
        case PacketRefusal::kCutInMask:
            return L"its channel mask";
        case PacketRefusal::kCutInStates:
            return L"its state bytes";
        case PacketRefusal::kCutInBaseIMU:
            return L"the base inertial block";
        case PacketRefusal::kCutInAfeIMU:
            return L"the front-end inertial block";
        case PacketRefusal::kCutInUltrasonic:
            return L"the ultrasonic block";
        case PacketRefusal::kCutInSamples:
            return L"its A/D samples";
        case PacketRefusal::kNone:
        case PacketRefusal::kWrongType:
            break;
    }
    return L"it";
}

}  // namespace

std::wstring DamageReason(const DamagedStretch& damage) {
    const std::wstring at = L"byte " + std::to_wstring(damage.noticedAt);
    switch (damage.refusal) {
        case PacketRefusal::kWrongType:
            return L"no packet begins at " + at;
        case PacketRefusal::kNone:
            return L"what begins at " + at + L" does not follow the packets before it";
        default:
            return L"the packet at " + at + L" would end beyond the file, inside " +
                   PlaceOfCut(damage.refusal);
    }
}

std::wstring CutEndReason(const RecordingSurvey& survey) {
    return L"the last packet lacks its end: the file ends inside " +
           PlaceOfCut(survey.cutEndRefusal);
}

std::vector<std::wstring> WhatCannotBeKnown(const RecordingSurvey& survey) {
    std::vector<std::wstring> unknown;
    if (!survey.hasTimestamps) {
        unknown.emplace_back(
            L"packets of this version carry no time: gaps, the measured rate and the duration of "
            L"damage "
            L"are unknown; the recording's duration is that of the samples");
    }
    if (survey.quick) {
        unknown.emplace_back(
            L"only the header and the packets at both ends were read: everything between them was "
            L"not read");
        if (!survey.hasTimestamps) {
            unknown.emplace_back(L"the duration is an estimate from the length of these packets");
        }
    }
    if (survey.fileSize == 0) unknown.emplace_back(L"the size of a pipe is not known beforehand");
    if (!survey.quick && !survey.damage.empty()) {
        unknown.emplace_back(
            L"the sizes of the outputs count only the packets before the first damage; an ordinary "
            L"conversion ends there and keeps of each file a multiple of 5000 records, often none");
    }
    return unknown;
}

}  // namespace stalwick
