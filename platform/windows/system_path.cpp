#include "platform/windows/system_path.h"

#include "platform/extended_path.h"
#include "platform/windows/windows_api.h"

namespace stalwick {

namespace {

// Absolute, with `\` only and without "." and ".."; the path itself where the system refuses it.
std::wstring FullPath(const std::wstring& path) {
    const DWORD capacity = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (capacity == 0) return path;
    std::wstring full(capacity, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), capacity, full.data(), nullptr);
    if (length == 0 || length >= capacity) return path;
    full.resize(length);
    return full;
}

}  // namespace

std::wstring SystemPath(const std::wstring& path) {
    if (!MayNeedExtendedLength(path, ::GetCurrentDirectoryW(0, nullptr))) return path;
    return ExtendedLengthPath(FullPath(path));
}

}  // namespace stalwick
