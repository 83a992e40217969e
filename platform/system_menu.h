// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stalwick {

// A window as the window system identifies it.
using NativeWindow = std::uintptr_t;

// Appends a separator and an item with this command to the window's system menu, which opens from
// the icon in its title bar. Only Windows has one; elsewhere nothing happens.
void AppendSystemMenuItem(NativeWindow window, std::uint32_t command, const std::wstring& text);

// The command of a native event that is a choice from the system menu; nothing for any other event.
// `eventType` and `message` are those that the toolkit passes to its native event handlers.
[[nodiscard]] std::optional<std::uint32_t> SystemMenuCommand(std::string_view eventType,
                                                             const void* message);

}  // namespace stalwick
