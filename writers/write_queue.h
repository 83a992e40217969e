#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace stalwick {

// A file that data can be appended to by whichever thread comes to it.
class WriteTarget {
  public:
    virtual ~WriteTarget() = default;
    // Never called by two threads at once. Keeps its own failures, without memory of its own.
    virtual void PerformAppend(const void* data, std::size_t size) noexcept = 0;
};

// Appends data to files behind the caller's back, with a thread of its own. The data of one file
// are appended in the order in which they were posted, and no two threads are in one file at the
// same time. Data are handed over, not copied: their memory must stay as it is until they were
// taken. All operations are for one caller's thread, which does queued work itself while it
// waits; so the last blocks of many files are written by both threads.
class WriteQueue {
  public:
    WriteQueue();
    // Does everything that is still queued.
    ~WriteQueue();
    WriteQueue(const WriteQueue&) = delete;
    WriteQueue& operator=(const WriteQueue&) = delete;

    // Waits while the queue is full.
    void Post(WriteTarget& target, const void* data, std::size_t size);

    // Whether the data that were posted at this address are in their file, or failed to get there.
    bool HasTaken(const void* data);
    // Waits until then.
    void WaitForData(const void* data);
    // Waits until nothing of that file is queued or being written.
    void WaitForTarget(const WriteTarget& target);

  private:
    struct Task {
        WriteTarget* target;
        const void* data;
        std::size_t size;
    };
    using Lock = std::unique_lock<std::mutex>;

    void Work();
    std::deque<Task>::iterator NextRunnable();
    void RunNext(Lock& lock, std::deque<Task>::iterator next);
    template <typename Condition>
    void HelpUntil(Lock& lock, Condition condition);
    template <typename Predicate>
    bool IsPending(Predicate predicate) const;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> queued_;    // in the order of posting
    std::vector<Task> running_;  // at most one a thread
    bool stopping_ = false;
    std::thread thread_;  // last: it uses everything above
};

}  // namespace stalwick
