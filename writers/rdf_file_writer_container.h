// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "writers/data_file.h"
#include "writers/file_writer_container.h"

namespace stalwick {

// Writes the raw data file, RawData.vrd: ten checksummed records per packet, each with all A/D
// channels of one sample instant (docs/output-files.md). It writes the file itself, without the
// data file library.
//
// Order of calls: fill the fields, Open, WriteRawRecords for every packet with samples, Finish or
// LeaveUnfinished.
class RDFFileWriterContainer : public FileWriterContainer {
  public:
    explicit RDFFileWriterContainer(const OutputSettings& outputSettings,
                                    WriteQueue* queue = nullptr)
        : FileWriterContainer(outputSettings, queue),
          file_(std::make_unique<DataFile>(outputSettings, &blocks)) {}

    // Returns 0, or -1 with the reason in File().
    [[nodiscard]] std::int32_t Open(const std::wstring& outputDirectory);

    // Writes the header at the file's start; at most 16,383 bytes as UTF-8. Returns 0 or -1.
    [[nodiscard]] std::int32_t WriteHeader(bool fileClosed);

    // Takes samples[channel * 10 + i], the TTL value of each sample (the last one repeats if the
    // list is short, 0 if it is empty) and the packet's hardware time in nanoseconds. `flag` has no
    // effect. Always returns 0: failed writes are in File().
    std::int32_t WriteRawRecords(std::span<const std::uint16_t> samples, std::int32_t flag,
                                 const std::vector<std::uint8_t>& ttlValues,
                                 std::optional<std::uint64_t> packetTimestamp);

    // Writes buffered records, then the final header; closes the file if that succeeded. Failures
    // are only in File().
    void Finish();

    // For a recording that fails in the middle: leaves only full blocks of 5000 records, or all
    // records if the settings keep them. Failures are only in File().
    void LeaveUnfinished();

    // Closes the file if Finish did not; a failure is in File() too.
    void Close() { file_->Close(); }

    [[nodiscard]] OutputFileState File() const { return file_->State(); }

    [[nodiscard]] OutputTotals Totals() const { return file_->Totals(); }

    std::uint32_t adChannelCount = 0;
    bool timestampsSaturated = false;

  private:
    void StartBlock(OutputFileRecord& file);
    void SubmitBlock(OutputFileRecord& file);
    void CountWords(const OutputFileRecord& file, std::size_t words);
    void AppendRecord(OutputFileRecord& file, std::span<const std::uint16_t> samples,
                      std::uint32_t sampleIndex, std::uint8_t ttlValue);

    std::size_t blockWords_ = 0;  // of a block of the pool
    std::uint64_t fullBlockWords_ = 0;
    std::uint64_t wordsInBlock_ = 0;   // since the last full block ended
    std::uint64_t fullBlocksEnd_ = 0;  // words, at the end of the last full block
    std::unique_ptr<DataFile> file_;
};

}  // namespace stalwick
