// SPDX-License-Identifier: BSD-3-Clause
#include "cli/conversion_batch.h"

#include <algorithm>
#include <future>
#include <new>
#include <utility>

#include "cli/before_conversion.h"
#include "cli/conversion_page.h"
#include "cli/earlier_report.h"
#include "engine/conversion_job.h"
#include "engine/out_of_memory.h"
#include "platform/file_checksum.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/processor_count.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

ConversionBatch::ConversionBatch(const CommandLine& commandLine,
                                 std::vector<PlannedRecording> recordings)
    : commandLine_(commandLine),
      recordings_(std::move(recordings)),
      outcomes_(recordings_.size()),
      parallel_(std::make_shared<ParallelConversions>(JobsAtOnce())),
      end_(outcomes_.size()) {
    for (std::size_t i = 0; i < recordings_.size(); ++i) {
        processors_.push_back(
            std::make_unique<DataProcessor>(commandLine_.outputSettings, parallel_));
        processors_.back()->FollowTime(!commandLine_.reportPath.empty());
        outcomes_[i].file = QueryRecordingFile(recordings_[i].path);
        bytesTotal_ += outcomes_[i].file.bytes;
    }
    if (commandLine_.skipConverted && !commandLine_.reportPath.empty()) ReadEarlierReport();
}

void ConversionBatch::ReadEarlierReport() {
    const EarlierReport report(commandLine_.reportPath);
    for (std::size_t i = 0; i < recordings_.size(); ++i) {
        recordings_[i].knownOutputs =
            report.OutputsOf(recordings_[i], outcomes_[i].file, commandLine_);
    }
}

std::uint32_t ConversionBatch::JobsAtOnce() const {
    const std::uint32_t jobs = commandLine_.jobs != 0 ? commandLine_.jobs : UsableProcessors();
    return static_cast<std::uint32_t>(std::min<std::size_t>(jobs, outcomes_.size()));
}

void ConversionBatch::Run(const OnEnded& onEnded) {
    std::vector<std::future<void>> others;
    for (std::uint32_t i = 1; i < parallel_->MostAtOnce(); ++i) {
        // If no further thread is available, this one does its share at the end.
        others.push_back(
            std::async(std::launch::async | std::launch::deferred, [&] { ConvertFiles(onEnded); }));
    }
    ConvertFiles(onEnded);
    for (std::future<void>& other : others) other.get();
}

void ConversionBatch::ConvertFiles(const OnEnded& onEnded) {
    while (const std::optional<std::size_t> index = BeginNextFile()) {
        ConvertFile(*index);
        if (commandLine_.checksum) TakeChecksums(*index);
        if (commandLine_.page) {
            AddPage(recordings_[*index], processors_[*index]->cancelRequested, outcomes_[*index]);
        }
        if (onEnded) onEnded(*index);
        if (outcomes_[*index].converted || commandLine_.keepGoing) continue;
        // Earlier files in the list are converted nevertheless.
        const std::lock_guard<std::mutex> lock(mutex_);
        end_ = std::min(end_, *index);
    }
    parallel_->ReleaseCore();
}

// The next file; none if all are begun, or an earlier one has failed.
std::optional<std::size_t> ConversionBatch::BeginNextFile() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (next_ >= end_) return std::nullopt;
    filesStarted_.fetch_add(1, std::memory_order_relaxed);
    return next_++;
}

void ConversionBatch::ConvertFile(std::size_t index) {
    DataProcessor& processor = *processors_[index];
    RecordingOutcome& outcome = outcomes_[index];
    // Allocated beforehand: when memory runs out there is none for them.
    std::wstring outOfMemory = FromUtf8(kStatusOutOfMemory);
    std::vector<ConversionDetail> details = {OutOfMemoryDetail(recordings_[index].path)};
    const RecordingFile file = outcome.file;
    try {
        // The check needs memory too.
        if (!NeedsConversion(recordings_[index], commandLine_, processor, outcome)) return;
        RunJob(index);
        details.clear();
    } catch (const std::bad_alloc&) {
        outcome = RecordingOutcome();
        outcome.file = file;
        outcome.status = std::move(outOfMemory);
    }
    outcome.account = processor.TakeAccount();
    if (outcome.account.details.empty()) outcome.account.details = std::move(details);
    outcome.converted = outcome.status == kStatusComplete || outcome.status == kStatusCanceled;
}

void ConversionBatch::RunJob(std::size_t index) {
    ConversionJob job;
    job.inputFiles = {recordings_[index].path};
    job.processor = processors_[index].get();
    job.outputDirectory = recordings_[index].parentDirectory;
    job.channelOptions = commandLine_.channelOptions;
    job.writeRawData = commandLine_.writeRawData;
    job.onFinished = [&](const std::wstring& status) { outcomes_[index].status = status; };
    RunConversionJob(job);
}

// Empty if it cannot be computed, with the reason among the failures.
std::string ConversionBatch::TakeChecksum(const std::wstring& path, std::size_t index) {
    const FileChecksum checksum = ChecksumOf(path, processors_[index]->cancelRequested);
    if (checksum.error != 0) {
        outcomes_[index].checksums.failures.push_back(OneLine(path) + L": no SHA-256: " +
                                                      SystemErrorText(checksum.error));
    }
    return checksum.sha256;
}

void ConversionBatch::TakeChecksums(std::size_t index) {
    RecordingOutcome& outcome = outcomes_[index];
    const std::wstring& path = recordings_[index].path;
    // A pipe can be read only once, and an unreadable recording has been reported.
    if (IsOrdinaryFile(path)) {
        outcome.checksums.recording = TakeChecksum(path, index);
        if (QueryRecordingFile(path) != outcome.file) {
            outcome.checksums.recording.clear();
            outcome.checksums.failures.push_back(
                OneLine(path) + L": no SHA-256: it has changed during the run; convert it again");
        }
    }
    for (const OutputAccount& output : outcome.account.outputs) {
        outcome.checksums.outputs.push_back(TakeChecksum(output.path, index));
    }
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
    if (progress.currentFile != 0) {
        const PathParts parts = SplitPath(recordings_[progress.currentFile - 1].name);
        progress.currentName = parts.name + parts.extension;
    }
    for (const auto& processor : processors_) {
        progress.bytesProcessed += processor->bytesProcessed.load(std::memory_order_relaxed);
    }
    return progress;
}

std::wstring ConversionBatch::Status() const {
    const auto failed =
        std::find_if(outcomes_.begin(), outcomes_.end(), [](const RecordingOutcome& outcome) {
            return !outcome.converted && !outcome.status.empty();
        });
    if (failed != outcomes_.end()) return failed->status;
    return Canceled() ? kStatusCanceled : kStatusComplete;
}

}  // namespace stalwick
