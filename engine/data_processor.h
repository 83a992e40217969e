// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/conversion_account.h"
#include "engine/parallel_conversions.h"
#include "writers/csc_file_writer_container.h"
#include "writers/output_settings.h"

namespace stalwick {

// Converts recordings, one after another. An object serves any number of jobs, one at a time.
//
// The atomics may be used from any thread at any time; everything else only by the converting
// thread, or by another one while nothing is being converted.
class DataProcessor {
  public:
    // `parallel`: this processor's conversions and those that run at the same time.
    explicit DataProcessor(
        const OutputSettings& settings = {},
        std::shared_ptr<ParallelConversions> parallel = std::make_shared<ParallelConversions>(1))
        : settings_(settings), parallel_(std::move(parallel)) {}

    // Converts each file into its own directory in `outputDirectory`. `writeEvents` and
    // `writeRawData` are compared with 1. Returns 0 if all were converted or the job was canceled,
    // -1 at the first failure.
    [[nodiscard]] std::int32_t ProcessFile(const std::vector<std::wstring>& files,
                                           const std::wstring& outputDirectory,
                                           const ChannelOptions& channelOptions,
                                           std::uint8_t writeEvents, std::uint8_t writeRawData);

    // Whether accounts include what the timestamps show: gaps and the clock's drift. The memory for
    // it grows with the number of gaps.
    void FollowTime(bool follows) { followsTime_ = follows; }
    [[nodiscard]] bool FollowsTime() const { return followsTime_; }

    // The text of the last failure that had one. Nothing clears it: a failure without a text leaves
    // the earlier one. Do not change this (pinned by
    // DataProcessor.FailureWithoutTextKeepsTheOldOne).
    void SetErrorMessage(const std::wstring& message) { errorMessage_ = message; }
    const std::wstring& GetErrorMessage() const { return errorMessage_; }

    // What happened besides the status, in order, since the last ClearDetails().
    const std::vector<ConversionDetail>& Details() const { return details_; }
    void ClearDetails() { details_.clear(); }
    std::vector<ConversionDetail> TakeDetails() { return std::exchange(details_, {}); }

    // What became of the recording that was converted last, even if ProcessFile threw. Taking it
    // leaves an empty account in the processor.
    const ConversionAccount& LastAccount() const { return lastAccount_; }
    ConversionAccount TakeAccount() { return std::exchange(lastAccount_, {}); }

    // Set to stop at the next block of data; the current file is then finished in order.
    std::atomic<std::uint8_t> cancelRequested{0};
    // Packets converted by the current call of ProcessFile.
    std::atomic<std::uint64_t> recordsProcessed{0};
    // Bytes read from the current file, and its size (0: unknown).
    std::atomic<std::uint64_t> bytesProcessed{0};
    std::atomic<std::uint64_t> bytesTotal{0};

  private:
    OutputSettings settings_;
    std::shared_ptr<ParallelConversions> parallel_;
    bool followsTime_ = false;
    std::wstring errorMessage_;
    std::vector<ConversionDetail> details_;
    ConversionAccount lastAccount_;
};

}  // namespace stalwick
