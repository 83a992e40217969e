// SPDX-License-Identifier: BSD-3-Clause
#include "platform/file_system.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <system_error>

#include "platform/windows/system_path.h"
#include "platform/windows/windows_api.h"

namespace stalwick {

// A link without a target still has attributes, so its name counts as taken.
PathKind QueryPath(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(SystemPath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::kMissing;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathKind::kDirectory : PathKind::kFile;
}

// Pipes and devices are outside the directories from which recordings are chosen.
bool IsOrdinaryFile(const std::wstring& path) {
    return QueryPath(path) == PathKind::kFile;
}

std::uint64_t QueryFileSize(const std::wstring& path) {
    constexpr unsigned kHalf = 32;
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (::GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &data) == FALSE ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return 0;
    }
    return std::uint64_t{data.nFileSizeHigh} << kHalf | data.nFileSizeLow;
}

std::optional<std::chrono::system_clock::time_point> QueryModificationTime(
    const std::wstring& path) {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    constexpr std::chrono::seconds kFrom1601To1970(11'644'473'600);
    constexpr unsigned kHalf = 32;
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (::GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &data) == FALSE) {
        return std::nullopt;
    }
    const std::uint64_t ticks = std::uint64_t{data.ftLastWriteTime.dwHighDateTime} << kHalf |
                                data.ftLastWriteTime.dwLowDateTime;
    const auto sinceEpoch = Ticks(static_cast<std::int64_t>(ticks)) - kFrom1601To1970;
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch));
}

SystemErrorCode RenameOver(const std::wstring& path, const std::wstring& newPath) {
    if (::MoveFileExW(SystemPath(path).c_str(), SystemPath(newPath).c_str(),
                      MOVEFILE_REPLACE_EXISTING) != FALSE) {
        return 0;
    }
    return static_cast<SystemErrorCode>(::GetLastError());
}

SystemErrorCode RemoveFile(const std::wstring& path) {
    if (::DeleteFileW(SystemPath(path).c_str()) != FALSE) return 0;
    return static_cast<SystemErrorCode>(::GetLastError());
}

// Directories of one drive or share have the same prefix; a volume mounted in a directory counts as
// its drive's, with its own free space.
std::optional<FreeSpace> QueryFreeSpace(const std::wstring& directory) {
    ULARGE_INTEGER available{};
    if (::GetDiskFreeSpaceExW(SystemPath(directory).c_str(), &available, nullptr, nullptr) ==
        FALSE) {
        return std::nullopt;
    }
    const std::wstring root = std::filesystem::path(AbsolutePath(directory)).root_name().native();
    return FreeSpace{available.QuadPart, std::hash<std::wstring>()(root)};
}

std::wstring AbsolutePath(const std::wstring& path) {
    const DWORD capacity = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (capacity == 0) return path;
    std::wstring absolute(capacity, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), capacity, absolute.data(), nullptr);
    if (length == 0 || length >= capacity) return path;
    absolute.resize(length);
    return absolute;
}

std::wstring ResolvedPath(const std::wstring& path) {
    std::error_code failed;
    const auto resolved = std::filesystem::weakly_canonical(AbsolutePath(path), failed);
    return failed ? AbsolutePath(path) : resolved.native();
}

SystemErrorCode ListDirectory(const std::wstring& path, std::vector<std::wstring>& names) {
    names.clear();
    std::error_code failed;
    std::filesystem::directory_iterator entry(SystemPath(path), failed);
    for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
        names.push_back(entry->path().filename().native());
    }
    std::sort(names.begin(), names.end());
    return static_cast<SystemErrorCode>(failed.value());
}

SystemErrorCode CreateDirectoryLevel(const std::wstring& path) {
    if (::CreateDirectoryW(SystemPath(path).c_str(), nullptr) != FALSE) return 0;
    return static_cast<SystemErrorCode>(::GetLastError());
}

}  // namespace stalwick
