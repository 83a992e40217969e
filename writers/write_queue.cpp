#include "writers/write_queue.h"

#include <algorithm>

namespace stalwick {

namespace {

// More than the blocks that a recording can have under way at once.
constexpr std::size_t kMostQueued = 1024;
constexpr std::size_t kThreads = 2;  // the queue's and the caller's

}  // namespace

WriteQueue::WriteQueue() {
    // Now, so that finishing what is queued needs no memory.
    running_.reserve(kThreads);
    thread_ = std::thread([this] { Work(); });
}

WriteQueue::~WriteQueue() {
    {
        const Lock lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
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
            changed_.wait(lock);
        }
    }
}

// The oldest task of a file that no thread is in. An older task of the same file stands before
// it, so each file keeps its order.
std::deque<WriteQueue::Task>::iterator WriteQueue::NextRunnable() {
    return std::find_if(queued_.begin(), queued_.end(), [this](const Task& task) {
        return std::none_of(running_.begin(), running_.end(),
                            [&](const Task& running) { return running.target == task.target; });
    });
}

void WriteQueue::RunNext(Lock& lock, std::deque<Task>::iterator next) {
    const Task task = *next;
    queued_.erase(next);
    running_.push_back(task);
    lock.unlock();
    task.target->PerformAppend(task.data, task.size);
    lock.lock();
    std::erase_if(running_, [&](const Task& running) { return running.target == task.target; });
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

template <typename Predicate>
bool WriteQueue::IsPending(Predicate predicate) const {
    return std::any_of(running_.begin(), running_.end(), predicate) ||
           std::any_of(queued_.begin(), queued_.end(), predicate);
}

void WriteQueue::Post(WriteTarget& target, const void* data, std::size_t size) {
    Lock lock(mutex_);
    HelpUntil(lock, [this] { return queued_.size() < kMostQueued; });
    queued_.push_back({&target, data, size});
    lock.unlock();
    changed_.notify_all();
}

bool WriteQueue::HasTaken(const void* data) {
    const Lock lock(mutex_);
    return !IsPending([&](const Task& task) { return task.data == data; });
}

void WriteQueue::WaitForData(const void* data) {
    Lock lock(mutex_);
    HelpUntil(lock,
              [&] { return !IsPending([&](const Task& task) { return task.data == data; }); });
}

void WriteQueue::WaitForTarget(const WriteTarget& target) {
    Lock lock(mutex_);
    HelpUntil(lock,
              [&] { return !IsPending([&](const Task& task) { return task.target == &target; }); });
}

}  // namespace stalwick
