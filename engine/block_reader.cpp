#include "engine/block_reader.h"

#include <system_error>

namespace stalwick {

BlockReader::BlockReader(ORDFileReader& reader, bool readsAhead) : reader_(reader) {
    if (!readsAhead) return;
    try {
        thread_ = std::thread([this] { Work(); });
    } catch (const std::system_error&) {
        // No thread to be had: Next() reads.
    }
}

BlockReader::~BlockReader() {
    if (!thread_.joinable()) return;
    {
        const std::scoped_lock lock(mutex_);
        stopping_ = true;
    }
    room_.notify_one();
    thread_.join();
}

void BlockReader::Read(RecordingBlock& block) noexcept {
    try {
        block.status = reader_.GetData(block.packets, block.endOfFile);
    } catch (...) {
        block.status = -1;
        block.exception = std::current_exception();
    }
    block.bytesRead = reader_.BytesRead();
}

void BlockReader::Work() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        RecordingBlock& block = blocks_[read_ % blocks_.size()];
        lock.unlock();
        Read(block);
        lock.lock();
        ++read_;
        available_.notify_one();
        if (block.IsLast()) return;
        if (read_ - given_ < kMostAhead) continue;
        room_.wait(lock, [this] { return stopping_ || read_ - given_ <= kFewAhead; });
    }
}

RecordingBlock& BlockReader::Next() {
    RecordingBlock* block = &blocks_.front();
    if (thread_.joinable()) {
        std::unique_lock lock(mutex_);
        available_.wait(lock, [this] { return given_ < read_; });
        block = &blocks_[given_ % blocks_.size()];
        ++given_;
        if (read_ - given_ == kFewAhead) room_.notify_one();
    } else {
        Read(*block);
    }
    if (block->exception) std::rethrow_exception(block->exception);
    return *block;
}

}  // namespace stalwick
