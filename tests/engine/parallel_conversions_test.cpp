// SPDX-License-Identifier: BSD-3-Clause

// Which conversions get helper threads: those for which a core is free that no other conversion
// uses.

#include "engine/parallel_conversions.h"

#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

TEST(ParallelConversions, CoresBeyondThoseOfTheConversionsAreFree) {
    ParallelConversions parallel(3, 5);
    EXPECT_TRUE(parallel.TryTakeCore());
    EXPECT_TRUE(parallel.TryTakeCore());
    EXPECT_FALSE(parallel.TryTakeCore());
}

TEST(ParallelConversions, ReleasedCoreIsFreeOnce) {
    ParallelConversions parallel(2, 2);
    EXPECT_FALSE(parallel.TryTakeCore());
    parallel.ReleaseCore();
    EXPECT_TRUE(parallel.TryTakeCore());
    EXPECT_FALSE(parallel.TryTakeCore());
}

TEST(ParallelConversions, ThreadsThatShareACoreReleaseNone) {
    ParallelConversions parallel(4, 2);
    parallel.ReleaseCore();
    parallel.ReleaseCore();
    EXPECT_FALSE(parallel.TryTakeCore());
    parallel.ReleaseCore();
    EXPECT_TRUE(parallel.TryTakeCore());
}

// Several spans of 50,000 bytes.
std::string Recording() {
    RandomRecordingShape shape;
    shape.packet.baseImu = shape.packet.afeImu = shape.packet.ultrasonic = true;
    shape.packetCount = 900;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(11, shape));
}

// The system's calls; records which threads read, and which write data.
class WorkingThreads final : public ForwardingFileCalls {
  public:
    std::function<void(unsigned readCount)> beforeRead;
    std::set<std::thread::id> reading;
    std::set<std::thread::id> writing;

    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override {
        reading.insert(std::this_thread::get_id());
        if (beforeRead) beforeRead(reads_++);
        return ForwardingFileCalls::Read(handle, data, size, transferred);
    }
    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        if (offset != 0) {
            const std::scoped_lock lock(mutex_);
            writing.insert(std::this_thread::get_id());
        }
        return ForwardingFileCalls::WriteAt(handle, offset, data, size, transferred);
    }

  private:
    std::mutex mutex_;
    unsigned reads_ = 0;
};

// Converts, and returns how many threads have taken part.
std::size_t Threads(HelperThreads helperThreads,
                    const std::shared_ptr<ParallelConversions>& parallel,
                    const std::function<void(unsigned readCount)>& beforeRead = {}) {
    const std::string recording = Recording();
    const TempDirectory directory;
    OutputSettings settings = QuickSettings();
    settings.helperThreads = helperThreads;
    settings.recordsPerWrite = 1;
    WorkingThreads calls;
    calls.beforeRead = beforeRead;
    const EngineRun run = RunEngine(directory, recording, AllOutputs(), settings, parallel);
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_TRUE(SameFiles(run.files, RunReference(directory, recording, AllOutputs()).files));
    // The converting thread does both: it reads the header, and writes the events.
    EXPECT_EQ(calls.reading.size(), calls.writing.size());
    return calls.reading.size() + calls.writing.size() - 1;
}

TEST(ConversionWithHelpers, NeedsAFreeCoreUnlessTheSettingsDecide) {
    const auto with = [](std::uint32_t cores) {
        return std::make_shared<ParallelConversions>(1, cores);
    };
    EXPECT_EQ(Threads(HelperThreads::kWhenThereAreCores, with(1)), 1U);
    EXPECT_EQ(Threads(HelperThreads::kWhenThereAreCores, with(2)), 3U);
    EXPECT_EQ(Threads(HelperThreads::kOff, with(2)), 1U);
    EXPECT_EQ(Threads(HelperThreads::kOn, with(1)), 3U);
}

TEST(ConversionWithHelpers, GetsThemMidwayOnceACoreIsReleased) {
    for (const unsigned reads : {1U, 2U, 3U, 5U}) {
        const auto parallel = std::make_shared<ParallelConversions>(2, 2);
        const auto release = [&](unsigned readCount) {
            if (readCount == reads) parallel->ReleaseCore();
        };
        EXPECT_EQ(Threads(HelperThreads::kWhenThereAreCores, parallel, release), 3U)
            << "after " << reads << " reads";
    }
}

TEST(ConversionWithHelpers, ReleasesTheirCoreAtItsEnd) {
    const auto parallel = std::make_shared<ParallelConversions>(1, 2);
    EXPECT_EQ(Threads(HelperThreads::kWhenThereAreCores, parallel), 3U);
    EXPECT_TRUE(parallel->TryTakeCore());
    EXPECT_FALSE(parallel->TryTakeCore());
}

TEST(ConversionWithHelpers, ReleasesNoCoreThatItDidNotTake) {
    const auto parallel = std::make_shared<ParallelConversions>(1, 1);
    EXPECT_EQ(Threads(HelperThreads::kOn, parallel), 3U);
    EXPECT_EQ(Threads(HelperThreads::kWhenThereAreCores, parallel), 1U);
    EXPECT_FALSE(parallel->TryTakeCore());
}

}  // namespace
}  // namespace stalwick::test
