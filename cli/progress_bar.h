#pragma once

#include <chrono>
#include <string>

#include "cli/conversion_batch.h"

namespace stalwick {

// The line that a progress bar shows, at most `width` columns: bar, per cent of bytes, MB/s, time
// left, file i of n.
std::string FormatProgress(const BatchProgress& progress, std::chrono::duration<double> elapsed,
                           int width);

// Draws the progress on standard error, and nothing when that is no terminal. The last line stays.
class ProgressBar {
  public:
    explicit ProgressBar(bool enabled);

    void Show(const BatchProgress& progress);
    void Finish(const BatchProgress& progress);

  private:
    bool enabled_;
    std::chrono::steady_clock::time_point start_;
    std::string shown_;
};

}  // namespace stalwick
