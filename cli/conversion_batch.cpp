#include "cli/conversion_batch.h"

#include <algorithm>
#include <new>

#include "engine/conversion_job.h"
#include "platform/input_file.h"

namespace stalwick {

namespace {

constexpr wchar_t kComplete[] = L"Processing complete";
constexpr wchar_t kCanceled[] = L"Data processing canceled.";
constexpr wchar_t kOutOfMemory[] = L"Processing failed - Not enough memory";

std::uint64_t SizeOf(const std::wstring& path) {
    InputFile file;
    return file.Open(path) == 0 ? file.Size() : 0;
}

}  // namespace

ConversionBatch::ConversionBatch(const CommandLine& commandLine)
    : commandLine_(commandLine), outcomes_(commandLine.inputFiles.size()) {
    for (const std::wstring& path : commandLine_.inputFiles) {
        processors_.push_back(std::make_unique<DataProcessor>(commandLine_.outputSettings));
        bytesTotal_ += SizeOf(path);
    }
}

void ConversionBatch::Run() {
    for (std::size_t i = 0; i < outcomes_.size(); ++i) {
        filesStarted_.store(i + 1, std::memory_order_relaxed);
        ConvertFile(i);
        if (!outcomes_[i].converted && !commandLine_.keepGoing) return;
    }
}

void ConversionBatch::ConvertFile(std::size_t index) {
    DataProcessor& processor = *processors_[index];
    FileOutcome& outcome = outcomes_[index];
    ConversionJob job;
    job.inputFiles = {commandLine_.inputFiles[index]};
    job.processor = &processor;
    job.outputDirectory = commandLine_.outputDirectory;
    job.channelOptions = commandLine_.channelOptions;
    job.writeRawData = commandLine_.writeRawData;
    job.onFinished = [&](const std::wstring& status) { outcome.status = status; };
    try {
        RunConversionJob(std::move(job));
    } catch (const std::bad_alloc&) {
        outcome.status = kOutOfMemory;
    }
    outcome.converted = outcome.status == kComplete || outcome.status == kCanceled;
    outcome.details = processor.Details();
}

void ConversionBatch::Cancel() {
    canceled_.store(true, std::memory_order_relaxed);
    for (const auto& processor : processors_) {
        processor->cancelRequested.store(1, std::memory_order_relaxed);
    }
}

BatchProgress ConversionBatch::Progress() const {
    BatchProgress progress;
    progress.currentFile = filesStarted_.load(std::memory_order_relaxed);
    progress.fileCount = outcomes_.size();
    progress.bytesTotal = bytesTotal_;
    for (const auto& processor : processors_) {
        progress.bytesProcessed += processor->bytesProcessed.load(std::memory_order_relaxed);
    }
    return progress;
}

std::wstring ConversionBatch::Status() const {
    const auto failed = std::find_if(
        outcomes_.begin(), outcomes_.end(),
        [](const FileOutcome& outcome) { return !outcome.converted && !outcome.status.empty(); });
    if (failed != outcomes_.end()) return failed->status;
    return Canceled() ? kCanceled : kComplete;
}

}  // namespace stalwick
