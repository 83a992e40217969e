// SPDX-License-Identifier: BSD-3-Clause
#include "writers/block_pool.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

// Records what it receives, and whether two threads were ever in it at the same time.
class NotingTarget final : public WriteTarget {
  public:
    void PerformAppend(const void* data, std::size_t size) noexcept override {
        if (inside_.fetch_add(1) != 0) overlapped = true;
        if (delay.count() != 0) std::this_thread::sleep_for(delay);
        const auto* values = static_cast<const int*>(data);
        taken.insert(taken.end(), values, values + size / sizeof(int));
        inside_.fetch_sub(1);
        ++calls;
    }

    std::vector<int> taken;
    std::atomic<bool> overlapped{false};
    std::atomic<std::size_t> calls{0};
    std::chrono::microseconds delay{0};

  private:
    std::atomic<int> inside_{0};
};

// A block of one number.
void Submit(BlockPool& pool, NotingTarget& target, int value) {
    std::byte* const block = pool.Acquire();
    std::memcpy(block, &value, sizeof value);
    pool.Submit(target, block, sizeof value);
}

TEST(BlockPool, EveryFileGetsItsDataInOrderAndFromOneThreadAtATime) {
    constexpr std::size_t kTargets = 7;
    std::vector<std::unique_ptr<NotingTarget>> targets;
    std::vector<std::vector<int>> expected(kTargets);
    for (std::size_t i = 0; i < kTargets; ++i) targets.push_back(std::make_unique<NotingTarget>());
    std::mt19937 random(1);
    {
        WriteQueue queue;
        queue.StartThread();
        BlockPool pool(&queue);
        pool.Reserve(kTargets, std::size_t{1} << 20U);  // few blocks, so it waits for them
        for (int value = 0; value < 6000; ++value) {
            const std::size_t target = random() % kTargets;
            Submit(pool, *targets[target], value);
            expected[target].push_back(value);
            if (random() % 50 != 0) continue;
            pool.WaitFor(*targets[target]);
            ASSERT_EQ(targets[target]->taken, expected[target]);
        }
        for (const auto& target : targets) pool.WaitFor(*target);
    }
    for (std::size_t i = 0; i < kTargets; ++i) {
        EXPECT_EQ(targets[i]->taken, expected[i]);
        EXPECT_FALSE(targets[i]->overlapped);
    }
}

TEST(BlockPool, SingleBlockIsWrittenSoonEvenIfNothingFollows) {
    NotingTarget target;
    WriteQueue queue;
    queue.StartThread();
    BlockPool pool(&queue);
    pool.Reserve(1, 64);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // the queue's thread rests now
    Submit(pool, target, 7);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (target.calls == 0 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(target.calls, 1U);
}

TEST(BlockPool, WaitingForAFileWithoutDataReturnsAtOnce) {
    const NotingTarget target;
    WriteQueue queue;
    queue.StartThread();
    BlockPool pool(&queue);
    pool.Reserve(1, 64);
    pool.WaitFor(target);
}

TEST(BlockPool, WaitingThreadHelpsWithOtherFiles) {
    NotingTarget first;
    NotingTarget second;
    first.delay = second.delay = std::chrono::microseconds(200);
    WriteQueue queue;
    queue.StartThread();
    BlockPool pool(&queue);
    pool.Reserve(200, 64);
    for (int i = 0; i < 100; ++i) {
        Submit(pool, first, i);
        Submit(pool, second, i);
    }
    pool.WaitFor(second);
    pool.WaitFor(first);
    EXPECT_EQ(first.taken.size(), 100U);
    EXPECT_EQ(second.taken.size(), 100U);
    EXPECT_FALSE(first.overlapped || second.overlapped);
}

TEST(BlockPool, QueueThatEndsHasWrittenEverything) {
    NotingTarget target;
    BlockPool* pool = nullptr;
    std::unique_ptr<BlockPool> owner;
    {
        WriteQueue queue;
        queue.StartThread();
        owner = std::make_unique<BlockPool>(&queue);
        pool = owner.get();
        pool->Reserve(8, 64);
        for (int i = 0; i < 5; ++i) Submit(*pool, target, i);
    }
    EXPECT_EQ(target.taken, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(BlockPool, WithoutAThreadDataAreWrittenAtOnce) {
    WriteQueue withoutThread;
    for (WriteQueue* const queue : {static_cast<WriteQueue*>(nullptr), &withoutThread}) {
        NotingTarget target;
        BlockPool pool(queue);
        pool.Reserve(1, 64);
        for (int i = 0; i < 3; ++i) {
            Submit(pool, target, i);
            EXPECT_EQ(target.taken.size(), static_cast<std::size_t>(i) + 1);
        }
    }
}

TEST(BlockPool, ThreadStartedMidwayContinuesInOrder) {
    for (const int before : {0, 1, 5, 100}) {
        NotingTarget target;
        WriteQueue queue;
        BlockPool pool(&queue);
        pool.Reserve(1, 64);
        std::vector<int> expected;
        for (int i = 0; i < 200; ++i) {
            if (i == before) queue.StartThread();
            Submit(pool, target, i);
            expected.push_back(i);
        }
        queue.StopThread();
        EXPECT_EQ(target.taken, expected);
        Submit(pool, target, 200);
        expected.push_back(200);
        EXPECT_EQ(target.taken, expected);
        EXPECT_FALSE(target.overlapped);
    }
}

TEST(BlockPool, BlocksAreAlignedAndDoNotOverlap) {
    BlockPool pool;
    pool.Reserve(3, 100);
    std::vector<std::byte*> blocks = {pool.Acquire(), pool.Acquire(), pool.Acquire()};
    std::sort(blocks.begin(), blocks.end());
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks[i]) % alignof(std::uint64_t), 0U);
        EXPECT_TRUE(i == 0 || blocks[i] - blocks[i - 1] >= 100);
    }
}

}  // namespace
}  // namespace stalwick
