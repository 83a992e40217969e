#include "cli/time_json.h"

#include <nlohmann/json.hpp>

namespace stalwick {

using Json = nlohmann::ordered_json;

namespace {

Json PositionOf(std::uint64_t position, PacketPositions positions) {
    return positions == PacketPositions::kKnown ? Json(position) : Json(nullptr);
}

}  // namespace

Json GapsAsJson(const TimeAccount& time, PacketPositions positions) {
    Json gaps = Json::array();
    for (const RecordingGap& gap : time.gaps) {
        gaps.push_back({{"at_seconds", gap.atSeconds},
                        {"seconds", gap.seconds},
                        {"missing_samples", gap.missingSamples},
                        {"position", PositionOf(gap.position, positions)}});
    }
    return gaps;
}

Json BackwardTimestampsAsJson(const TimeAccount& time, PacketPositions positions) {
    Json all = Json::array();
    for (const BackwardTimestamp& step : time.backwardTimestamps) {
        all.push_back({{"position", PositionOf(step.position, positions)},
                       {"nanoseconds", step.nanoseconds}});
    }
    return all;
}

}  // namespace stalwick
