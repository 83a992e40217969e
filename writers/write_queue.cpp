// SPDX-License-Identifier: BSD-3-Clause
#include "writers/write_queue.h"

#include <algorithm>
#include <chrono>
#include <exception>

namespace stalwick {

namespace {

constexpr std::size_t kThreads = 2;  // the queue's and the caller's
// The thread is woken for this many blocks at a time, because waking costs as much as writing one.
constexpr std::size_t kBlocksWorthWaking = 8;
// Fewer blocks do not wait longer than this, so that little is lost if the program is killed.
constexpr std::chrono::milliseconds kLongestRest{50};

}  // namespace

WriteQueue::WriteQueue() {
    running_.reserve(kThreads);
}

void WriteQueue::StartThread() {
    try {
        thread_ = std::thread([this] { Work(); });
    } catch (const std::exception&) {
        // No thread, or no memory for it, is available: Submit appends.
    }
}

void WriteQueue::StopThread() {
    if (!thread_.joinable()) return;
    {
        const Lock lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void WriteQueue::Reserve(std::size_t blockCount) {
    const Lock lock(mutex_);
    queued_.reserve(queued_.capacity() + blockCount);
}

void WriteQueue::Work() {
    Lock lock(mutex_);
    for (;;) {
        const auto next = NextRunnable();
        if (next != queued_.end()) {
            RunNext(lock, next);
        } else if (stopping_ && queued_.empty()) {
            return;
        } else {
            resting_ = true;
            changed_.wait_for(lock, kLongestRest);
            resting_ = false;
        }
    }
}

// The oldest task whose file no thread is writing. Older tasks of the same file come before it, so
// each file keeps its order.
WriteQueue::Tasks::iterator WriteQueue::NextRunnable() {
    return std::find_if(queued_.begin(), queued_.end(), [this](const Task& task) {
        return std::none_of(running_.begin(), running_.end(),
                            [&](const Task& running) { return running.target == task.target; });
    });
}

void WriteQueue::RunNext(Lock& lock, Tasks::iterator next) {
    const Task task = *next;
    queued_.erase(next);
    running_.push_back(task);
    lock.unlock();
    task.target->PerformAppend(task.block, task.size);
    lock.lock();
    std::erase_if(running_, [&](const Task& running) { return running.target == task.target; });
    task.home->push_back(task.block);
    changed_.notify_all();
}

template <typename Condition>
void WriteQueue::HelpUntil(Lock& lock, Condition condition) {
    while (!condition()) {
        const auto next = NextRunnable();
        if (next != queued_.end()) {
            RunNext(lock, next);
        } else {
            changed_.wait(lock);
        }
    }
}

void WriteQueue::Submit(WriteTarget& target, std::byte* block, std::size_t size, FreeBlocks& home) {
    if (!thread_.joinable()) {
        target.PerformAppend(block, size);
        home.push_back(block);
        return;
    }
    const Lock lock(mutex_);
    queued_.push_back({&target, block, size, &home});
    if (resting_ && queued_.size() >= kBlocksWorthWaking) changed_.notify_all();
}

std::byte* WriteQueue::Take(FreeBlocks& home) {
    Lock lock(mutex_);
    HelpUntil(lock, [&] { return !home.empty(); });
    std::byte* const block = home.back();
    home.pop_back();
    return block;
}

void WriteQueue::WaitForTarget(const WriteTarget& target) {
    const auto isItsTask = [&](const Task& task) { return task.target == &target; };
    Lock lock(mutex_);
    if (resting_ && !queued_.empty()) changed_.notify_all();
    HelpUntil(lock, [&] {
        return std::none_of(running_.begin(), running_.end(), isItsTask) &&
               std::none_of(queued_.begin(), queued_.end(), isItsTask);
    });
}

}  // namespace stalwick
