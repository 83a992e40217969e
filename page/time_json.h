// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <span>

#include <nlohmann/json_fwd.hpp>

#include "survey/recording_survey.h"

namespace stalwick {

// Lists as docs/info.schema.json has them.
[[nodiscard]] nlohmann::ordered_json GapsAsJson(const TimeAccount& time);
[[nodiscard]] nlohmann::ordered_json BackwardTimestampsAsJson(const TimeAccount& time);
[[nodiscard]] nlohmann::ordered_json DamageAsJson(std::span<const DamagedStretch> damage);

}  // namespace stalwick
