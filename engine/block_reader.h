#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "ord/ord_file_reader.h"

namespace stalwick {

// What one call of ORDFileReader::GetData gave.
struct RecordingBlock {
    std::int32_t status = 0;
    bool endOfFile = false;
    std::vector<ORDDataPacket> packets;
    std::uint64_t bytesRead = 0;   // of the file so far, with the header block
    std::exception_ptr exception;  // what the call threw

    bool IsLast() const { return status != 0 || endOfFile; }
};

// Gives the blocks of an open recording in their order. With a second thread they are read and
// decoded a few blocks ahead, while the caller works on the one that it has.
class BlockReader {
  public:
    // Where no thread can be had, blocks are read when they are asked for.
    BlockReader(ORDFileReader& reader, bool readsAhead);
    // Waits for a block that is being read.
    ~BlockReader();
    BlockReader(const BlockReader&) = delete;
    BlockReader& operator=(const BlockReader&) = delete;

    // The next block; it is the caller's until the next call. Throws what reading it threw. There
    // is none behind a block that IsLast(). Only then may the caller use the reader itself again.
    RecordingBlock& Next();

  private:
    static constexpr std::size_t kMostAhead = 8;
    // Reading goes on when no more than these are left: the threads wake each other seldom.
    static constexpr std::size_t kFewAhead = 4;

    void Read(RecordingBlock& block) noexcept;
    void Work();

    ORDFileReader& reader_;
    std::array<RecordingBlock, kMostAhead + 1> blocks_;  // in turns; one is the caller's
    std::mutex mutex_;
    std::condition_variable available_;
    std::condition_variable room_;
    std::size_t read_ = 0;   // blocks so far
    std::size_t given_ = 0;  // blocks so far
    bool stopping_ = false;
    std::thread thread_;  // last: it uses everything above
};

}  // namespace stalwick
