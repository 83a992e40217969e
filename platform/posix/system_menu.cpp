// SPDX-License-Identifier: BSD-3-Clause
#include "platform/system_menu.h"

namespace stalwick {

void AppendSystemMenuItem(NativeWindow, std::uint32_t, const std::wstring&) {}

std::optional<std::uint32_t> SystemMenuCommand(std::string_view, const void*) {
    return {};
}

}  // namespace stalwick
