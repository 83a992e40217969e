#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "engine/data_processor.h"

namespace stalwick {

// What became of one file.
struct FileOutcome {
    bool converted = false;  // false also for a file that was not reached
    std::wstring status;     // empty for a file that was not reached
    std::vector<ConversionDetail> details;
};

// How far the batch is; readable from any thread.
struct BatchProgress {
    std::size_t currentFile = 0;  // from 1
    std::size_t fileCount = 0;
    std::uint64_t bytesProcessed = 0;
    std::uint64_t bytesTotal = 0;  // 0 where a size is not known
};

// Converts the files of a command line, each in a job of its own.
class ConversionBatch {
  public:
    explicit ConversionBatch(const CommandLine& commandLine);

    // Converts; returns when all is done or the first file failed (unless the command line says
    // to keep going). Call it once.
    void Run();

    // From any thread: the running file is finished in order, later ones get empty outputs.
    void Cancel();

    BatchProgress Progress() const;

    // After Run(): the final status text, that of the first failure in the list's order.
    std::wstring Status() const;
    const std::vector<FileOutcome>& Outcomes() const { return outcomes_; }
    bool Canceled() const { return canceled_.load(std::memory_order_relaxed); }

  private:
    void ConvertFile(std::size_t index);

    CommandLine commandLine_;
    std::vector<std::unique_ptr<DataProcessor>> processors_;  // one for each file
    std::vector<FileOutcome> outcomes_;
    std::uint64_t bytesTotal_ = 0;
    std::atomic<std::size_t> filesStarted_{0};
    std::atomic<bool> canceled_{false};
};

}  // namespace stalwick
