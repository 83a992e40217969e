// SPDX-License-Identifier: BSD-3-Clause
#include "platform/windows/system_path.h"

#include "platform/extended_path.h"
#include "platform/file_system.h"
#include "platform/windows/windows_api.h"

namespace stalwick {

std::wstring SystemPath(const std::wstring& path) {
    if (!MayNeedExtendedLength(path, ::GetCurrentDirectoryW(0, nullptr))) return path;
    return ExtendedLengthPath(AbsolutePath(path));
}

}  // namespace stalwick
