// SPDX-License-Identifier: BSD-3-Clause
#include "platform/file_system.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "platform/text_encoding.h"

namespace stalwick {

PathKind QueryPath(const std::wstring& path) {
    const std::string narrow = ToUtf8(path);
    struct stat status {};
    if (::lstat(narrow.c_str(), &status) != 0) return PathKind::kMissing;
    struct stat target {};
    if (S_ISLNK(status.st_mode) && ::stat(narrow.c_str(), &target) == 0) status = target;
    return S_ISDIR(status.st_mode) ? PathKind::kDirectory : PathKind::kFile;
}

bool IsOrdinaryFile(const std::wstring& path) {
    struct stat status {};
    return ::stat(ToUtf8(path).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::uint64_t QueryFileSize(const std::wstring& path) {
    struct stat status {};
    if (::stat(ToUtf8(path).c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::chrono::system_clock::time_point> QueryModificationTime(
    const std::wstring& path) {
    struct stat status {};
    if (::stat(ToUtf8(path).c_str(), &status) != 0) return std::nullopt;
    const timespec& time = status.st_mtim;
    const auto sinceEpoch =
        std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch));
}

SystemErrorCode RenameOver(const std::wstring& path, const std::wstring& newPath) {
    return std::rename(ToUtf8(path).c_str(), ToUtf8(newPath).c_str()) == 0 ? 0 : errno;
}

SystemErrorCode RemoveFile(const std::wstring& path) {
    return ::unlink(ToUtf8(path).c_str()) == 0 ? 0 : errno;
}

std::optional<FreeSpace> QueryFreeSpace(const std::wstring& directory) {
    const std::string narrow = ToUtf8(directory);
    struct statvfs space {};
    struct stat status {};
    if (::statvfs(narrow.c_str(), &space) != 0 || ::stat(narrow.c_str(), &status) != 0) {
        return std::nullopt;
    }
    if (space.f_blocks == 0) return std::nullopt;  // not on a disk: it has no size
    return FreeSpace{std::uint64_t{space.f_bavail} * space.f_frsize,
                     static_cast<std::uint64_t>(status.st_dev)};
}

std::wstring AbsolutePath(const std::wstring& path) {
    std::error_code failed;
    const auto absolute = std::filesystem::absolute(ToUtf8(path), failed);
    return failed ? path : FromUtf8(absolute.native());
}

std::wstring ResolvedPath(const std::wstring& path) {
    std::error_code failed;
    const auto resolved = std::filesystem::weakly_canonical(ToUtf8(path), failed);
    return failed ? path : FromUtf8(resolved.native());
}

SystemErrorCode ListDirectory(const std::wstring& path, std::vector<std::wstring>& names) {
    names.clear();
    std::error_code failed;
    std::filesystem::directory_iterator entry(ToUtf8(path), failed);
    for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
        names.push_back(FromUtf8(entry->path().filename().native()));
    }
    std::sort(names.begin(), names.end());
    return failed.value();
}

SystemErrorCode CreateDirectoryLevel(const std::wstring& path) {
    constexpr mode_t kAllForAll = 0777;  // minus the process's umask
    return ::mkdir(ToUtf8(path).c_str(), kAllForAll) == 0 ? 0 : errno;
}

}  // namespace stalwick
