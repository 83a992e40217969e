// SPDX-License-Identifier: BSD-3-Clause
#include "platform/system_menu.h"

#include "platform/windows/windows_api.h"

namespace stalwick {

void AppendSystemMenuItem(NativeWindow window, std::uint32_t command, const std::wstring& text) {
    const HMENU menu = GetSystemMenu(reinterpret_cast<HWND>(window), FALSE);
    if (menu == nullptr || text.empty()) return;
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, command, text.c_str());
}

std::optional<std::uint32_t> SystemMenuCommand(std::string_view eventType, const void* message) {
    if (eventType != "windows_generic_MSG") return {};
    const auto* event = static_cast<const MSG*>(message);
    if (event->message != WM_SYSCOMMAND) return {};
    return static_cast<std::uint32_t>(event->wParam);
}

}  // namespace stalwick
