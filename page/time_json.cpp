// SPDX-License-Identifier: BSD-3-Clause
#include "page/time_json.h"

#include <nlohmann/json.hpp>

#include "page/info_words.h"
#include "page/json_values.h"
#include "platform/text_encoding.h"

namespace stalwick {

using Json = nlohmann::ordered_json;

Json GapsAsJson(const TimeAccount& time) {
    Json gaps = Json::array();
    for (const RecordingGap& gap : time.gaps) {
        gaps.push_back({{"at_seconds", gap.atSeconds},
                        {"seconds", gap.seconds},
                        {"missing_samples", gap.missingSamples},
                        {"position", gap.position}});
    }
    return gaps;
}

Json BackwardTimestampsAsJson(const TimeAccount& time) {
    Json all = Json::array();
    for (const BackwardTimestamp& step : time.backwardTimestamps) {
        all.push_back({{"position", step.position}, {"nanoseconds", step.nanoseconds}});
    }
    return all;
}

Json DamageAsJson(std::span<const DamagedStretch> damage) {
    Json all = Json::array();
    for (const DamagedStretch& stretch : damage) {
        all.push_back({{"position", stretch.position},
                       {"bytes", stretch.bytes},
                       {"reason", ToUtf8(DamageReason(stretch))},
                       {"noticed_at", stretch.noticedAt},
                       {"at_seconds", OrNull(stretch.atSeconds)},
                       {"missing_samples", OrNull(stretch.missingSamples)}});
    }
    return all;
}

}  // namespace stalwick
