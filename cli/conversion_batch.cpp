#include "cli/conversion_batch.h"

#include <algorithm>
#include <future>
#include <new>

#include "engine/conversion_job.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/processor_count.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

// The name of the file's output directory, without regard to the case of ASCII letters: some file
// systems have none either.
std::wstring DirectoryKey(const std::wstring& path) {
    std::wstring name = SplitPath(path).name;
    for (wchar_t& c : name) {
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    }
    return name;
}

ConversionDetail OutOfMemoryDetail(const std::wstring& path) {
    return {ConversionDetail::Kind::kIncomplete,
            OneLine(path) + L": not converted whole: not enough memory; " +
                kOutputsMayLackTheirEnd +
                L"; convert it again with fewer outputs, fewer --jobs or --block-records 64"};
}

}  // namespace

ConversionBatch::ConversionBatch(const CommandLine& commandLine)
    : commandLine_(commandLine), outcomes_(commandLine.inputFiles.size()), end_(outcomes_.size()) {
    // Jobs keep the cores busy by themselves; threads that write would only be in their way.
    if (commandLine_.jobs * 2 > UsableProcessors() && commandLine_.jobs > 1) {
        commandLine_.outputSettings.helperThreads = HelperThreads::kOff;
    }
    commandLine_.outputSettings.conversionsAtOnce = JobsAtOnce();
    for (const std::wstring& path : commandLine_.inputFiles) {
        processors_.push_back(std::make_unique<DataProcessor>(commandLine_.outputSettings));
        bytesTotal_ += QueryFileSize(path);
        directoryKeys_.push_back(DirectoryKey(path));
        waiting_.push_back(waiting_.size());
    }
}

std::uint32_t ConversionBatch::JobsAtOnce() const {
    return static_cast<std::uint32_t>(std::min<std::size_t>(commandLine_.jobs, outcomes_.size()));
}

void ConversionBatch::Run() {
    const std::uint32_t jobs = JobsAtOnce();
    std::vector<std::future<void>> others;
    for (std::uint32_t i = 1; i < jobs; ++i) {
        // Where no further thread can be had, its share is done at the end by this one.
        others.push_back(
            std::async(std::launch::async | std::launch::deferred, [this] { ConvertFiles(); }));
    }
    ConvertFiles();
    for (std::future<void>& other : others) other.get();
}

void ConversionBatch::ConvertFiles() {
    while (const std::optional<std::size_t> index = BeginNextFile()) {
        try {
            ConvertFile(*index);
        } catch (...) {
            EndFile(*index);  // or files of the same directory would be waited for without end
            throw;
        }
        EndFile(*index);
    }
}

// The first file that may be begun now; waits for one. None when no file is left.
std::optional<std::size_t> ConversionBatch::BeginNextFile() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        const auto isFree = [this](std::size_t i) {
            return !busyDirectories_.contains(directoryKeys_[i]);
        };
        const auto next = std::find_if(waiting_.begin(), waiting_.end(), isFree);
        if (waiting_.empty() || waiting_.front() >= end_) return std::nullopt;
        if (next != waiting_.end() && *next < end_) {
            const std::size_t index = *next;
            waiting_.erase(next);
            busyDirectories_.insert(directoryKeys_[index]);
            filesStarted_.fetch_add(1, std::memory_order_relaxed);
            return index;
        }
        changed_.wait(lock);
    }
}

void ConversionBatch::EndFile(std::size_t index) {
    const std::lock_guard<std::mutex> lock(mutex_);
    busyDirectories_.erase(directoryKeys_[index]);
    // Files that stand before it in the list are converted all the same.
    if (!outcomes_[index].converted && !commandLine_.keepGoing) end_ = std::min(end_, index);
    changed_.notify_all();
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
    // Made beforehand: where memory runs out there is none for them.
    std::wstring outOfMemory = FromUtf8(kStatusOutOfMemory);
    std::vector<ConversionDetail> details = {OutOfMemoryDetail(commandLine_.inputFiles[index])};
    try {
        RunConversionJob(std::move(job));
        details.clear();
    } catch (const std::bad_alloc&) {
        outcome.status = std::move(outOfMemory);
    }
    outcome.details = processor.TakeDetails();
    if (outcome.details.empty()) outcome.details = std::move(details);
    outcome.converted = outcome.status == kStatusComplete || outcome.status == kStatusCanceled;
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
    return Canceled() ? kStatusCanceled : kStatusComplete;
}

}  // namespace stalwick
