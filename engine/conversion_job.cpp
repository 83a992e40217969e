// SPDX-License-Identifier: BSD-3-Clause
#include "engine/conversion_job.h"

namespace stalwick {

std::wstring FailureStatus(const std::wstring& errorText) {
    return errorText.empty() ? L"Processing failed" : L"Processing failed - " + errorText;
}

void RunConversionJob(const ConversionJob& job) {
    DataProcessor& processor = *job.processor;
    processor.ClearDetails();
    for (const std::wstring& path : job.inputFiles) {
        const std::int32_t status =
            processor.ProcessFile({path}, job.outputDirectory, job.channelOptions,
                                  job.writeEvents ? 1 : 0, job.writeRawData ? 1 : 0);
        if (job.onFinished && status != 0) {
            job.onFinished(FailureStatus(processor.GetErrorMessage()));
            return;
        }
    }
    if (!job.onFinished) return;
    const bool canceled = processor.cancelRequested.load(std::memory_order_relaxed) != 0;
    job.onFinished(canceled ? kStatusCanceled : kStatusComplete);
}

}  // namespace stalwick
