// SPDX-License-Identifier: BSD-3-Clause
#include "writers/data_file.h"

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/forwarding_file_calls.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

// Records where, and with how many bytes, the disk was asked to begin writing data.
class WriteBackCalls final : public ForwardingFileCalls {
  public:
    SystemErrorCode StartWriteBack(FileHandle handle, std::uint64_t offset,
                                   std::uint64_t size) override {
        spans.emplace_back(offset, size);
        return ForwardingFileCalls::StartWriteBack(handle, offset, size);
    }
    std::vector<std::pair<std::uint64_t, std::uint64_t>> spans;
};

// Counts how often the disk was waited for.
class SyncCalls final : public ForwardingFileCalls {
  public:
    SystemErrorCode SyncData(FileHandle handle) override {
        ++syncs;
        return ForwardingFileCalls::SyncData(handle);
    }
    int syncs = 0;
};

TEST(DataFile, WaitsForTheDiskOnceForTheSameData) {
    const TempDirectory directory;
    SyncCalls calls;
    DataFile file{OutputSettings()};
    ASSERT_EQ(file.Create(directory.Path(L"a.vcs")), 0);
    ASSERT_TRUE(file.SetHeader("open"));
    EXPECT_EQ(calls.syncs, 0);
    ASSERT_TRUE(file.Append("data", 4));
    ASSERT_TRUE(file.Sync());
    ASSERT_TRUE(file.SetHeader("closed"));
    EXPECT_EQ(calls.syncs, 1);
}

TEST(DataFile, TotalsCountWhatIsStillQueued) {
    const TempDirectory directory;
    WriteQueue queue;
    queue.StartThread();
    BlockPool blocks(&queue);
    blocks.Reserve(1, 1000);
    DataFile file(OutputSettings(), &blocks);
    ASSERT_EQ(file.Create(directory.Path(L"a.vcs")), 0);
    ASSERT_TRUE(file.Submit(blocks.Acquire(), 1000));
    EXPECT_EQ(file.Totals().bytes, 1000U);
}

TEST(DataFile, WriteBackAfterACutBeginsWhereTheFileEndsThen) {
    constexpr std::size_t kPiece = std::size_t{1} << 20U;
    constexpr std::size_t kKept = 5000;
    const TempDirectory directory;
    WriteBackCalls calls;
    DataFile file{OutputSettings()};
    ASSERT_EQ(file.Create(directory.Path(L"a.vcs")), 0);
    const std::vector<char> data(kPiece);
    ASSERT_TRUE(file.Append(data.data(), data.size()));
    ASSERT_TRUE(file.CutTo(kKept));
    ASSERT_TRUE(file.Append(data.data(), kKept));
    ASSERT_TRUE(file.Append(data.data(), data.size()));
    const std::vector<std::pair<std::uint64_t, std::uint64_t>> expected = {
        {kOutputHeaderSize, kPiece}, {kOutputHeaderSize + kKept, kKept + kPiece}};
    EXPECT_EQ(calls.spans, expected);
    EXPECT_TRUE(file.Close());
}

// A disk that takes its time.
class SlowCalls final : public ForwardingFileCalls {
  public:
    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return ForwardingFileCalls::WriteAt(handle, offset, data, size, transferred);
    }
};

TEST(DataFile, ClosesAfterWhatWasHandedOverIsWritten) {
    const TempDirectory directory;
    SlowCalls calls;
    WriteQueue queue;
    queue.StartThread();
    BlockPool pool(&queue);
    pool.Reserve(1, 1000);
    DataFile file(OutputSettings(), &pool);
    ASSERT_EQ(file.Create(directory.Path(L"a.vcs")), 0);
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(file.Submit(pool.Acquire(), 1000));
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.State().failure);
    EXPECT_EQ(file.State().dataBytes, 5000U);
}

TEST(DataFile, FileWithoutAHeaderHasNoBytesOfOne) {
    const TempDirectory directory;
    DataFile file{OutputSettings()};
    ASSERT_EQ(file.Create(directory.Path(L"a.vcs")), 0);
    EXPECT_EQ(file.Totals().files, 1U);
    EXPECT_EQ(file.Totals().bytes, 0U);
    ASSERT_TRUE(file.SetHeader("text"));
    EXPECT_EQ(file.Totals().bytes, kOutputHeaderSize);
}

}  // namespace
}  // namespace stalwick::test
