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
struct DecodedSpan {
    std::int32_t status = 0;
    bool endOfFile = false;
    std::vector<ORDDataPacket> packets;
    std::uint64_t bytesRead = 0;   // of the file so far, with the header span
    bool readFailedAfter = false;  // the next span is the failure
    std::exception_ptr exception;  // what the call threw

    bool IsLast() const { return status != 0 || endOfFile; }
};

// Gives the spans of an open recording in their order. With a second thread they are read and
// decoded a few spans ahead, while the caller works on the one that it has.
class SpanReader {
  public:
    // Where no thread can be had, spans are read when they are asked for.
    SpanReader(ORDFileReader& reader, bool readsAhead);
    // Waits for a span that is being read.
    ~SpanReader();
    SpanReader(const SpanReader&) = delete;
    SpanReader& operator=(const SpanReader&) = delete;

    // The next span; it is the caller's until the next call. Throws what reading it threw. There
    // is none behind a span that IsLast(). Only then may the caller use the reader itself again.
    DecodedSpan& Next();

  private:
    static constexpr std::size_t kMostAhead = 8;
    // Reading goes on when no more than these are left: the threads wake each other seldom.
    static constexpr std::size_t kFewAhead = 4;

    void Read(DecodedSpan& span) noexcept;
    void Work();

    ORDFileReader& reader_;
    std::array<DecodedSpan, kMostAhead + 1> spans_;  // in turns; one is the caller's
    std::mutex mutex_;
    std::condition_variable available_;
    std::condition_variable room_;
    std::size_t read_ = 0;   // spans so far
    std::size_t given_ = 0;  // spans so far
    bool stopping_ = false;
    std::thread thread_;  // last: it uses everything above
};

}  // namespace stalwick
