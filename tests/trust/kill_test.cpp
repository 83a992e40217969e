// SPDX-License-Identifier: BSD-3-Clause

// The command killed at random moments: it leaves beginnings of its outputs, and the next run
// neither stumbles over them nor changes them.

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/trust/command_run.h"
#include "tests/trust/expected_outputs.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

using Clock = std::chrono::steady_clock;

int KillCount() {
    const char* count = std::getenv("STALWICK_KILLS");  // set by make soak
    return count != nullptr ? std::atoi(count) : 200;
}

// The same moments each time, unless the environment selects others (make soak).
std::uint64_t KillSeed() {
    const char* seed = std::getenv("STALWICK_KILL_SEED");
    return seed != nullptr ? std::strtoull(seed, nullptr, 10) : 1;
}

class KillTest : public testing::Test {
  protected:
    // Long enough that the writers write full blocks in the middle of the run.
    KillTest() : scene_(MakeFullRecording(3, 1500)), expected_(ExpectFiles(scene_.Reference())) {
        const auto start = Clock::now();
        EXPECT_EQ(scene_.Run().exitStatus, 0);
        wholeRun_ = Clock::now() - start;
        Clear();
    }

    void Clear() const {
        for (const auto& entry : FilesIn(scene_.RecordingDirectory())) {
            RemoveFile(scene_.RecordingDirectory() + kPathSeparator + FromUtf8(entry.first));
        }
    }

    // Ends the run after a part of its time; true if it was still running.
    bool KillAfter(double part) const {
        CommandProcess command(scene_.Arguments());
        std::this_thread::sleep_for(wholeRun_ * part);
        command.Signal(SIGKILL);
        return command.Wait().signal == SIGKILL;
    }

    CommandScene scene_;
    ExpectedFiles expected_;
    Clock::duration wholeRun_{};
};

TEST_F(KillTest, LeavesBeginningsAndTheNextRunSucceedsNextToThem) {
    const std::string seed = std::to_string(KillSeed());
    std::mt19937_64 random(KillSeed());
    std::uniform_real_distribution<double> part(0.0, 1.1);
    int killed = 0;
    int withData = 0;
    for (int run = 0; killed < KillCount(); ++run) {
        ASSERT_LT(run, 10 * KillCount()) << "most runs end before they can be killed";
        Clear();
        const double moment = part(random);
        const bool isKilled = KillAfter(moment);
        if (isKilled) ++killed;
        SCOPED_TRACE("STALWICK_KILL_SEED=" + seed + ", run " + std::to_string(run) +
                     ", killed at " + std::to_string(moment) + " of a whole run's time");
        const auto left = FilesIn(scene_.RecordingDirectory());
        const auto masked = scene_.MaskedFiles();
        ASSERT_TRUE(AreValidRemainders(masked, expected_));
        for (const auto& entry : left) {
            if (!isKilled || entry.second.size() <= 16384) continue;
            ++withData;
            break;
        }
        if (run % 10 != 0) continue;
        // The second run chooses new names if the first left files.
        std::set<std::string> taken;
        for (const auto& entry : left) taken.insert(entry.first);
        ASSERT_EQ(scene_.Run().exitStatus, 0);
        const auto expected = scene_.Reference(taken).files;
        const auto whole = scene_.MaskedFiles();
        for (const auto& [name, bytes] : expected) {
            ASSERT_TRUE(SameBytes(whole.at(name), bytes)) << name;
        }
        const auto after = FilesIn(scene_.RecordingDirectory());
        for (const auto& [name, bytes] : left)
            ASSERT_TRUE(SameBytes(after.at(name), bytes)) << name;
    }
    // Otherwise this tested nothing.
    EXPECT_GT(withData, KillCount() / 20);
    RecordProperty("seed", seed);
    RecordProperty("killed", killed);
    RecordProperty("withData", withData);
}

}  // namespace
}  // namespace stalwick::test
