// SPDX-License-Identifier: BSD-3-Clause

// The wait for the disk as the system sees it: the linker resolves fdatasync and fsync to those in
// this file instead of the C library's.

#include <cerrno>
#include <filesystem>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/file_calls.h"
#include "tests/support/engine_run.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

namespace fs = std::filesystem;

using NamesAndSizes = std::multiset<std::pair<std::string, std::uintmax_t>>;

std::mutex syncedMutex;
NamesAndSizes synced;  // the contents of each file when its descriptor was synced

std::vector<fs::path> syncedDirectories;

fs::path PathOf(int descriptor) {
    std::error_code noFile;
    return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), noFile);
}

void Note(int descriptor) {
    std::error_code noFile;
    const fs::path path = PathOf(descriptor);
    const std::uintmax_t size = fs::file_size(path, noFile);
    const std::scoped_lock lock(syncedMutex);
    synced.emplace(path.filename().string(), size);
}

EngineRun Convert(bool syncBeforeFinalHeader) {
    const TempDirectory directory;
    OutputSettings settings;
    settings.syncBeforeFinalHeader = syncBeforeFinalHeader;
    synced.clear();
    syncedDirectories.clear();
    EngineRun run = RunEngine(directory, MakeFullRecording(3, 64), AllOutputs(), settings);
    EXPECT_EQ(run.statusText, L"Processing complete");
    return run;
}

TEST(DiskSync, EachFileThatSaysClosedIsSyncedOnceWithAllItsBytes) {
    const EngineRun run = Convert(true);
    NamesAndSizes expected;
    for (const auto& [name, bytes] : run.files) {
        if (name != "Events.vev") expected.emplace(name, bytes.size());
    }
    EXPECT_EQ(expected.size(), 23U);
    EXPECT_EQ(synced, expected);
}

TEST(DiskSync, NewDirectoriesAreSynced) {
    Convert(true);
    ASSERT_EQ(syncedDirectories.size(), 3U);
    EXPECT_EQ(syncedDirectories[0].filename(), "rec");
    EXPECT_EQ(syncedDirectories[1], syncedDirectories[0].parent_path());
    EXPECT_EQ(syncedDirectories[2], syncedDirectories[1].parent_path());
}

TEST(DiskSync, IsLeftOutIfNobodyWantsToWait) {
    EXPECT_EQ(Convert(false).files.size(), 24U);
    EXPECT_EQ(synced, NamesAndSizes());
    EXPECT_TRUE(syncedDirectories.empty());
}

TEST(DiskSync, FileSystemThatCannotSyncDirectoriesIsNoFailure) {
    const int descriptor = ::open("/proc", O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(::fsync(descriptor), -1);
    EXPECT_EQ(errno, EINVAL);
    ::close(descriptor);
    EXPECT_EQ(SystemFileCalls().SyncDirectory(L"/proc"), 0);
}

TEST(DiskSync, DirectoryThatIsNotThereIsTheSystemsReason) {
    const TempDirectory directory;
    EXPECT_EQ(SystemFileCalls().SyncDirectory(directory.Path(L"none")), ENOENT);
}

TEST(DiskSync, FailureIsTheSystemsReason) {
    int ends[2] = {};
    ASSERT_EQ(::pipe(ends), 0);
    EXPECT_EQ(SystemFileCalls().SyncData(ends[1]), EINVAL);  // a pipe has no disk
    ::close(ends[0]);
    ::close(ends[1]);
}

}  // namespace
}  // namespace stalwick::test

extern "C" int __real_fdatasync(int descriptor);
extern "C" int __wrap_fdatasync(int descriptor);
extern "C" int __wrap_fdatasync(int descriptor) {
    stalwick::test::Note(descriptor);
    return __real_fdatasync(descriptor);
}

extern "C" int __real_fsync(int descriptor);
extern "C" int __wrap_fsync(int descriptor);
extern "C" int __wrap_fsync(int descriptor) {
    stalwick::test::syncedDirectories.push_back(stalwick::test::PathOf(descriptor));
    return __real_fsync(descriptor);
}
