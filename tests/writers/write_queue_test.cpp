#include "writers/write_queue.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

// Notes what it is given, and whether two threads were ever in it at once.
class NotingTarget final : public WriteTarget {
  public:
    void PerformAppend(const void* data, std::size_t size) noexcept override {
        if (inside_.fetch_add(1) != 0) overlapped = true;
        if (delay.count() != 0) std::this_thread::sleep_for(delay);
        const auto* values = static_cast<const int*>(data);
        taken.insert(taken.end(), values, values + size / sizeof(int));
        inside_.fetch_sub(1);
    }

    std::vector<int> taken;
    std::atomic<bool> overlapped{false};
    std::chrono::microseconds delay{0};

  private:
    std::atomic<int> inside_{0};
};

TEST(WriteQueue, EveryFileGetsItsDataInOrderAndFromOneThreadAtATime) {
    constexpr std::size_t kTargets = 7;
    constexpr int kValues = 6000;
    std::vector<int> values(kValues);
    for (int i = 0; i < kValues; ++i) values[static_cast<std::size_t>(i)] = i;
    std::vector<std::unique_ptr<NotingTarget>> targets;
    std::vector<std::vector<int>> expected(kTargets);
    for (std::size_t i = 0; i < kTargets; ++i) targets.push_back(std::make_unique<NotingTarget>());
    std::mt19937 random(1);
    {
        WriteQueue queue;
        for (std::size_t at = 0; at < values.size();) {
            const std::size_t count = std::min<std::size_t>(1 + random() % 3, values.size() - at);
            const std::size_t target = random() % kTargets;
            queue.Post(*targets[target], &values[at], count * sizeof(int));
            for (std::size_t i = 0; i < count; ++i) expected[target].push_back(values[at + i]);
            at += count;
            if (random() % 50 == 0) {
                queue.WaitForTarget(*targets[target]);
                ASSERT_EQ(targets[target]->taken, expected[target]);
            }
        }
    }
    for (std::size_t i = 0; i < kTargets; ++i) {
        EXPECT_EQ(targets[i]->taken, expected[i]);
        EXPECT_FALSE(targets[i]->overlapped);
    }
}

TEST(WriteQueue, WaitingForDataReturnsWhenTheyAreInTheirFile) {
    NotingTarget slow;
    slow.delay = std::chrono::microseconds(500);
    const std::vector<int> values = {1, 2, 3};
    WriteQueue queue;
    for (const int& value : values) queue.Post(slow, &value, sizeof value);
    queue.WaitForData(&values[1]);
    EXPECT_TRUE(queue.HasTaken(&values[1]));
    EXPECT_TRUE(queue.HasTaken(&values[0]));  // posted before, to the same file
    queue.WaitForTarget(slow);
    EXPECT_EQ(slow.taken, values);
}

TEST(WriteQueue, WaitingForWhatWasNeverPostedReturnsAtOnce) {
    NotingTarget target;
    const int value = 0;
    WriteQueue queue;
    queue.WaitForData(&value);
    queue.WaitForTarget(target);
    EXPECT_TRUE(queue.HasTaken(&value));
}

TEST(WriteQueue, WaitingThreadHelpsWithOtherFiles) {
    // Two files that each take long: one thread would need twice as long as either.
    NotingTarget first;
    NotingTarget second;
    first.delay = second.delay = std::chrono::microseconds(200);
    const int value = 5;
    WriteQueue queue;
    for (int i = 0; i < 100; ++i) {
        queue.Post(first, &value, sizeof value);
        queue.Post(second, &value, sizeof value);
    }
    queue.WaitForTarget(second);
    queue.WaitForTarget(first);
    EXPECT_EQ(first.taken.size(), 100U);
    EXPECT_EQ(second.taken.size(), 100U);
    EXPECT_FALSE(first.overlapped || second.overlapped);
}

TEST(WriteQueue, PostingFarMoreThanFitsWaitsAndLosesNothing) {
    NotingTarget target;
    const int value = 9;
    {
        WriteQueue queue;
        for (int i = 0; i < 5000; ++i) queue.Post(target, &value, sizeof value);
    }
    EXPECT_EQ(target.taken.size(), 5000U);
}

}  // namespace
}  // namespace stalwick
