// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The output files of the reference conversion, each as a plain object that grows byte strings
// (docs/output-files.md). Only reference_converter.cpp and tests of the formats need them.

namespace stalwick::test {

inline constexpr std::size_t kReferenceRecordsPerWrite = 5000;

/** Truncated; values below 0 and NaN become 0, values from 2^64 on the largest value. */
std::uint64_t SaturatedUnsigned(double value);

/** The values of the common lines of a header, as UTF-8. */
struct ReferenceHeaderLines {
    std::string fileType;
    std::string fileVersion;
    std::string fileUuid;
    std::string sessionUuid;
    std::string path;
    std::string timeCreated;
    std::optional<std::string> timeClosed;  // absent: the file was not closed properly
    std::uint32_t recordSize = 0;
    std::string acquisitionSystem;
    std::string acqEntName;
};
std::string ReferenceCommonHeader(const ReferenceHeaderLines& lines);
std::string ReferenceChannelLines(double samplingFrequency, std::uint32_t adMaxValue,
                                  std::uint32_t channelIndex);
std::string ReferenceRawLines(double samplingFrequency, std::uint32_t adChannelCount);

/** A file whose records wait in memory until a whole buffer of them is written. */
struct ReferenceOutputFile {
    std::string fileName;
    ReferenceHeaderLines lines;
    std::string headerText;
    std::string written;
    std::string pending;
    std::size_t recordsPerWrite = kReferenceRecordsPerWrite;

    void WritePending();
    /** Header block and written records; empty until a header is written. */
    std::string Bytes() const;
};

/** One continuously sampled channel. */
struct ReferenceChannelFile : ReferenceOutputFile {
    std::uint32_t channelIndex = 0;
    double samplingFrequency = 0.0;
    std::uint64_t timestampOffset = 0;
    std::uint32_t phaseModulus = 10;

    std::uint64_t runningTimestamp = 0;
    double accumulatedTimestamp = 0.0;
    std::uint64_t lastBaseTimestamp = 0;
    std::uint32_t phase = 0;

    std::size_t completeCount = 0;  // records in `pending`
    std::uint64_t recordTimestamp = 0;
    std::vector<std::int16_t> recordSamples;  // of the record in progress, at most 512

    void WriteSamples(const std::int16_t* samples, std::size_t count,
                      const std::optional<std::uint64_t>& baseTimestamp);
    void WriteRest();

  private:
    void StartRecord();
    void CompleteRecord(bool hasBaseTimestamp);
    std::string RecordBytes() const;
};

struct ReferenceEventFile : ReferenceOutputFile {
    std::uint64_t timestampOffset = 0;
    double samplePeriod = 0.0;  // microseconds
    std::optional<std::uint8_t> lastTtl;
    std::size_t pendingCount = 0;

    void WriteTtlValues(const std::vector<std::uint8_t>& ttlValues,
                        const std::optional<std::uint64_t>& hardwareTimestamp, double packetTime);
};

struct ReferenceRawFile : ReferenceOutputFile {
    std::uint32_t adChannelCount = 0;
    double samplingFrequency = 0.0;
    std::uint64_t timestampOffset = 0;
    std::uint64_t runningTimestamp = 0;

    /** samples[channel * 10 + i]; ten records. */
    void WriteRecords(const std::vector<std::uint16_t>& samples,
                      const std::vector<std::uint8_t>& ttlValues,
                      const std::optional<std::uint64_t>& packetTimestamp);
};

}  // namespace stalwick::test
