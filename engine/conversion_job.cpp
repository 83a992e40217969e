#include "engine/conversion_job.h"

#include "platform/file_system.h"

namespace stalwick {

namespace {

std::wstring FailureStatus(const DataProcessor& processor) {
    const std::wstring& reason = processor.GetErrorMessage();
    return reason.empty() ? L"Processing failed" : L"Processing failed - " + reason;
}

}  // namespace

void RunConversionJob(ConversionJob job) {
    DataProcessor& processor = *job.processor;
    processor.ClearDetails();
    for (const std::wstring& path : job.inputFiles) {
        const std::int32_t status =
            processor.ProcessFile({path}, job.outputDirectory, job.channelOptions,
                                  job.writeEvents ? 1 : 0, job.writeRawData ? 1 : 0);
        if (job.onFinished && status != 0) {
            job.onFinished(FailureStatus(processor));
            return;
        }
    }
    if (!job.onFinished) return;
    const bool canceled = processor.cancelRequested.load(std::memory_order_relaxed) != 0;
    job.onFinished(canceled ? kStatusCanceled : kStatusComplete);
}

SystemErrorCode EnsureOutputDirectory(const std::wstring& directory) {
    if (QueryPath(directory) == PathKind::kDirectory) return 0;
    const SystemErrorCode code = CreateDirectoryLevel(directory);
    // Another conversion may have made it in between.
    return code != 0 && QueryPath(directory) == PathKind::kDirectory ? 0 : code;
}

std::wstring OutputDirectoryErrorText(const std::wstring& directory) {
    return L"Error creating output directory(" + directory +
           L").  Unable to proceed.  Please make sure the output directory location exists.";
}

}  // namespace stalwick
