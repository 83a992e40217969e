// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>
#include <vector>

namespace stalwick {

// A file to which any thread can append data.
class WriteTarget {
  public:
    virtual ~WriteTarget() = default;
    // Never called by two threads at once. Keeps its own failures, without allocating.
    virtual void PerformAppend(const void* data, std::size_t size) noexcept = 0;
};

// Appends blocks to files: at once, or, from StartThread on, on a separate thread after the caller
// has handed them over. The blocks of one file are appended in the order of arrival, and no two
// threads write to one file at the same time. All operations are for one caller's thread, which
// does queued work itself while it waits; so both threads write the last blocks of many files.
class WriteQueue {
  public:
    using FreeBlocks = std::vector<std::byte*>;

    WriteQueue();
    ~WriteQueue() { StopThread(); }
    WriteQueue(const WriteQueue&) = delete;
    WriteQueue& operator=(const WriteQueue&) = delete;

    // Call it at most once. If no thread is available, blocks are still appended at once.
    void StartThread();
    // Returns after everything that is still queued is done; blocks are appended at once again.
    void StopThread();

    // Reserves room for that many more blocks: handing them over then needs no memory.
    void Reserve(std::size_t blockCount);
    // Appends the block's first `size` bytes, after which the block is free again. Does not wait
    // for the thread.
    void Submit(WriteTarget& target, std::byte* block, std::size_t size, FreeBlocks& home);
    // Takes a free block; waits until there is one.
    std::byte* Take(FreeBlocks& home);
    // Waits until nothing of that file is queued or being written.
    void WaitForTarget(const WriteTarget& target);

  private:
    struct Task {
        WriteTarget* target;
        std::byte* block;
        std::size_t size;
        FreeBlocks* home;  // where the block goes afterwards
    };
    using Tasks = std::vector<Task>;
    using Lock = std::unique_lock<std::mutex>;

    void Work();
    Tasks::iterator NextRunnable();
    void RunNext(Lock& lock, Tasks::iterator next);
    template <typename Condition>
    void HelpUntil(Lock& lock, Condition condition);

    std::mutex mutex_;
    std::condition_variable changed_;
    Tasks queued_;   // in the order of submission
    Tasks running_;  // at most one a thread
    bool stopping_ = false;
    bool resting_ = false;  // the thread waits for more to do
    std::thread thread_;    // last: it uses everything above
};

}  // namespace stalwick
