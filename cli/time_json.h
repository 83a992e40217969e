#pragma once

#include <nlohmann/json_fwd.hpp>

#include "survey/time_account.h"

namespace stalwick {

// Whether an account says where in the file the packets stand.
enum class PacketPositions { kKnown, kUnknown };

// Lists as docs/info.schema.json has them; unknown positions are null.
nlohmann::ordered_json GapsAsJson(const TimeAccount& time, PacketPositions positions);
nlohmann::ordered_json BackwardTimestampsAsJson(const TimeAccount& time, PacketPositions positions);

}  // namespace stalwick
