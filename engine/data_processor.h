#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "engine/conversion_account.h"
#include "writers/csc_file_writer_container.h"
#include "writers/output_settings.h"

namespace stalwick {

// Converts recordings, one after another. An object serves any number of jobs, one at a time.
//
// The atomics may be used from any thread at any time, everything else by the thread that
// converts, or by another one while nothing is converted.
class DataProcessor {
  public:
    // `conversionsAtOnce`: by this process; their files are open together.
    explicit DataProcessor(const OutputSettings& settings = {}, std::uint32_t conversionsAtOnce = 1)
        : settings_(settings), conversionsAtOnce_(conversionsAtOnce) {}

    // Converts the files into directories of their own below `outputDirectory`. `writeEvents` and
    // `writeRawData` are compared with 1. Returns 0 when all were converted or the job was
    // canceled, -1 at the first failure.
    [[nodiscard]] std::int32_t ProcessFile(const std::vector<std::wstring>& files,
                                           const std::wstring& outputDirectory,
                                           const ChannelOptions& channelOptions,
                                           std::uint8_t writeEvents, std::uint8_t writeRawData);

    // Whether accounts say what the timestamps say: gaps and the clock's drift. What it keeps grows
    // with the number of gaps.
    void FollowTime(bool follows) { followsTime_ = follows; }
    [[nodiscard]] bool FollowsTime() const { return followsTime_; }

    // The text of the last failure that had one. Nothing clears it: a failure without a text
    // leaves the earlier one. Kept (pinned by DataProcessor.FailureWithoutTextKeepsTheOldOne).
    void SetErrorMessage(const std::wstring& message) { errorMessage_ = message; }
    const std::wstring& GetErrorMessage() const { return errorMessage_; }

    // What happened beside the status, in order, since the last ClearDetails().
    const std::vector<ConversionDetail>& Details() const { return details_; }
    void ClearDetails() { details_.clear(); }
    std::vector<ConversionDetail> TakeDetails() { return std::exchange(details_, {}); }

    // What became of the recording that was converted last; also where ProcessFile threw. The
    // processor keeps an empty account when it is taken.
    const ConversionAccount& LastAccount() const { return lastAccount_; }
    ConversionAccount TakeAccount() { return std::exchange(lastAccount_, {}); }

    // Set to stop at the next block of data; the current file is then finished in order.
    std::atomic<std::uint8_t> cancelRequested{0};
    // Packets converted by the current call of ProcessFile.
    std::atomic<std::uint64_t> recordsProcessed{0};
    // Bytes read of the current file, and its size (0: not known).
    std::atomic<std::uint64_t> bytesProcessed{0};
    std::atomic<std::uint64_t> bytesTotal{0};

  private:
    OutputSettings settings_;
    std::uint32_t conversionsAtOnce_;
    bool followsTime_ = false;
    std::wstring errorMessage_;
    std::vector<ConversionDetail> details_;
    ConversionAccount lastAccount_;
};

}  // namespace stalwick
