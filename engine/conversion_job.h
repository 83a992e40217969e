// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/data_processor.h"

namespace stalwick {

// What one press of "Create New Files" requests.
struct ConversionJob {
    std::vector<std::wstring> inputFiles;  // converted in this order
    DataProcessor* processor = nullptr;    // not owned; must outlive the job
    std::wstring outputDirectory;
    ChannelOptions channelOptions{};
    bool writeEvents = true;
    bool writeRawData = false;
    // Receives the final status text, on the thread that runs the job.
    std::function<void(const std::wstring&)> onFinished;
};

// The status texts of a job that did not fail.
inline constexpr wchar_t kStatusComplete[] = L"Processing complete";
inline constexpr wchar_t kStatusCanceled[] = L"Data processing canceled.";

// "Processing failed", with " - " and the error text if there is one.
[[nodiscard]] std::wstring FailureStatus(const std::wstring& errorText);

// Converts every file of the job. With `onFinished` set, it stops at the first failure and reports
// kStatusComplete, kStatusCanceled or "Processing failed", the last with " - " and the processor's
// error text if there is one. Without it, failures stop nothing and nothing is reported. Standard
// exceptions pass through.
void RunConversionJob(const ConversionJob& job);

}  // namespace stalwick
