// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <optional>

#include <nlohmann/json.hpp>

namespace stalwick {

// Values that are unknown are null in every document.
template <typename T>
[[nodiscard]] nlohmann::ordered_json OrNull(const std::optional<T>& value) {
    return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json(nullptr);
}

}  // namespace stalwick
