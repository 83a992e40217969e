// SPDX-License-Identifier: BSD-3-Clause
#include "page/info_json.h"

#include <nlohmann/json.hpp>

#include "page/info_words.h"
#include "page/json_values.h"
#include "page/time_json.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormatVersion = 1;

Json HeaderOf(const RecordingHeader& header) {
    return {{"num_ad_channels", header.numADChannels},
            {"sampling_frequency", header.samplingFrequency},
            {"ad_max_value", header.adMaxValue},
            {"ad_bit_volts", header.adBitVolts},
            {"input_range", header.inputRange},
            {"file_version", ToUtf8(header.fileVersion)},
            {"utc_offset_microseconds", header.utcOffsetMicroseconds},
            {"session_uuid", ToUtf8(header.sessionUuid)},
            {"acquisition_system", ToUtf8(header.acquisitionSystem)},
            {"base_imu_available", header.baseImuAvailable},
            {"afe_imu_available", header.afeImuAvailable},
            {"ultrasonic_available", header.ultrasonicAvailable}};
}

Json BlocksOf(const BlockCounts& blocks) {
    return {{"ad_samples", blocks.adSamples},
            {"base_imu", blocks.baseImu},
            {"afe_imu", blocks.afeImu},
            {"ultrasonic", blocks.ultrasonic},
            {"channel_mask", blocks.channelMask},
            {"state_per_sample", blocks.statePerSample},
            {"hardware_timestamp", blocks.hardwareTimestamp}};
}

Json CutEndOf(const RecordingSurvey& survey) {
    if (survey.cutEndBytes == 0) return nullptr;
    return {{"bytes", survey.cutEndBytes}, {"reason", ToUtf8(CutEndReason(survey))}};
}

Json ChannelsOf(const RecordingSurvey& survey) {
    Json all = Json::array();
    for (const ChannelStatistics& channel : survey.channelStatistics) {
        all.push_back({{"channel", channel.channel},
                       {"file", "CSC" + std::to_string(channel.channel + 1) + ".vcs"},
                       {"samples", channel.samples},
                       {"min_microvolts", channel.minMicrovolts},
                       {"max_microvolts", channel.maxMicrovolts},
                       {"mean_microvolts", channel.meanMicrovolts},
                       {"rms_microvolts", channel.rmsMicrovolts},
                       {"at_range_ends", channel.atRangeEnds},
                       {"longest_flat_run", channel.longestFlatRun}});
    }
    return all;
}

Json OutputsOf(const RecordingSurvey& survey) {
    Json all = Json::array();
    for (const OutputSize& output : survey.outputs) {
        all.push_back(
            {{"name", ToUtf8(output.name)}, {"records", output.records}, {"bytes", output.bytes}});
    }
    return all;
}

Json UnknownOf(const RecordingSurvey& survey) {
    Json all = Json::array();
    for (const std::wstring& what : WhatCannotBeKnown(survey)) all.push_back(ToUtf8(what));
    return all;
}

void AddTimes(const RecordingSurvey& survey, Json& document) {
    document["duration_seconds"] = survey.durationSeconds;
    document["has_timestamps"] = survey.hasTimestamps;
    document["first_timestamp_ns"] = OrNull(survey.firstTimestampNs);
    document["last_timestamp_ns"] = OrNull(survey.lastTimestampNs);
    document["measured_rate"] = OrNull(survey.measuredRate);
    document["drift_ppm"] = OrNull(survey.driftPpm);
}

// Known only if every packet was read; null otherwise.
void AddWhole(const RecordingSurvey& survey, Json& document) {
    const auto add = [&](const char* key, Json value) {
        document[key] = survey.quick ? Json(nullptr) : std::move(value);
    };
    // Without timestamps, gaps are unknown.
    add("gaps", survey.hasTimestamps ? GapsAsJson(survey) : Json(nullptr));
    add("missing_samples", survey.hasTimestamps ? Json(survey.missingSamples) : Json(nullptr));
    add("gap_seconds", survey.hasTimestamps ? Json(survey.gapSeconds) : Json(nullptr));
    add("repeated_timestamps", survey.repeatedTimestamps);
    add("short_steps", survey.shortSteps);
    add("backward_timestamps", BackwardTimestampsAsJson(survey));
    add("ttl_changes", survey.ttlChanges);
    add("ttl_events", survey.ttlEvents);
    add("damage", DamageAsJson(survey.damage));
    add("damaged_bytes", survey.damagedBytes);
    add("channel_statistics", ChannelsOf(survey));
    add("outputs", OutputsOf(survey));
}

}  // namespace

std::string SurveyAsJson(const RecordingSurvey& survey) {
    Json document;
    document["format_version"] = kFormatVersion;
    document["path"] = ToUtf8(survey.path);
    document["bytes"] = survey.fileSize;
    document["quick"] = survey.quick;
    document["header"] = HeaderOf(survey.header);
    document["packets"] = survey.quick ? Json(nullptr) : Json(survey.packets);
    document["packets_read"] = survey.packets;
    AddTimes(survey, document);
    document["channels"] = survey.header.numADChannels;
    document["channels_carried"] = survey.channelsCarried;
    document["channels_masked"] = survey.channelsMasked;
    document["blocks"] = BlocksOf(survey.blocks);
    AddWhole(survey, document);
    document["cut_end"] = CutEndOf(survey);
    document["read_error"] =
        survey.readError.empty() ? Json(nullptr) : Json(ToUtf8(survey.readError));
    document["unknown"] = UnknownOf(survey);
    // A file name may have bytes that are not text.
    return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace stalwick
