// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "cli/conversion_batch.h"

namespace stalwick {

// The line of a progress bar, in less than `width` columns: bar, per cent of bytes, MB/s, time
// left, file i of n, and its name as far as there is room.
[[nodiscard]] std::wstring FormatProgress(const BatchProgress& progress,
                                          std::chrono::duration<double> elapsed, int width);

// Draws the progress on standard error; draws nothing if that is not a terminal. The last line
// stays. Any thread may call any operation.
class ProgressBar {
  public:
    explicit ProgressBar(bool enabled);

    void Show(const BatchProgress& progress);
    // Prints the lines on standard error, above the progress. Every line that is printed during a
    // run goes through here.
    void PrintLines(const std::vector<std::wstring>& lines);
    void Finish(const BatchProgress& progress);

  private:
    void Draw(const BatchProgress& progress);
    void Erase();

    bool enabled_;
    std::chrono::steady_clock::time_point start_;
    std::mutex mutex_;    // of what is on the terminal
    std::wstring shown_;  // the progress shown there
};

}  // namespace stalwick
