// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/conversion_plan.h"
#include "cli/recording_outcome.h"
#include "engine/data_processor.h"

namespace stalwick {

// The progress of the batch; readable from any thread.
struct BatchProgress {
    std::size_t currentFile = 0;  // from 1
    std::size_t fileCount = 0;
    std::uint64_t bytesProcessed = 0;
    std::uint64_t bytesTotal = 0;  // 0 if a size is unknown
    std::wstring currentName{};    // of the file begun last, without its directory
};

// Converts recordings, each in a separate job, as many in parallel as the command line says. No two
// of them may have the same directory for their outputs.
class ConversionBatch {
  public:
    ConversionBatch(const CommandLine& commandLine, std::vector<PlannedRecording> recordings);

    // Called when a recording has ended, with its position in the list, on the thread that
    // converted it. With jobs, several threads may call it at the same time.
    using OnEnded = std::function<void(std::size_t index)>;

    // Converts; returns when all is done. After a failed file no further one is begun, unless the
    // command line says to keep going. Call it once.
    void Run(const OnEnded& onEnded = {});

    // From any thread: the running file is finished in order, later ones get empty outputs.
    void Cancel();

    [[nodiscard]] BatchProgress Progress() const;

    // After Run(): the final status text, that of the first failure in the order of the list.
    [[nodiscard]] std::wstring Status() const;
    const std::vector<RecordingOutcome>& Outcomes() const { return outcomes_; }
    const std::vector<PlannedRecording>& Recordings() const { return recordings_; }
    [[nodiscard]] bool Canceled() const { return canceled_.load(std::memory_order_relaxed); }

  private:
    void ReadEarlierReport();
    std::uint32_t JobsAtOnce() const;
    void ConvertFiles(const OnEnded& onEnded);
    std::optional<std::size_t> BeginNextFile();
    void ConvertFile(std::size_t index);
    void RunJob(std::size_t index);
    void TakeChecksums(std::size_t index);
    std::string TakeChecksum(const std::wstring& path, std::size_t index);

    CommandLine commandLine_;
    std::vector<PlannedRecording> recordings_;
    std::vector<RecordingOutcome> outcomes_;
    std::shared_ptr<ParallelConversions> parallel_;
    std::vector<std::unique_ptr<DataProcessor>> processors_;  // one for each file
    std::uint64_t bytesTotal_ = 0;

    std::mutex mutex_;      // of the fields below
    std::size_t next_ = 0;  // the first file not begun
    std::size_t end_ = 0;   // no file from here on will be begun

    std::atomic<std::size_t> filesStarted_{0};
    std::atomic<bool> canceled_{false};
};

}  // namespace stalwick
