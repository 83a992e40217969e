// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/temp_directory.h"
#include "writers/csc_file_writer_container.h"

namespace stalwick::test {

inline constexpr ChannelOptions kADOnly = {1, 0, 0, 0};

inline OutputSettings ChannelSettings(std::uint32_t recordsPerWrite = 0) {
    OutputSettings settings = QuickSettings();
    settings.recordsPerWrite = recordsPerWrite;
    return settings;
}

// One packet's samples for the files of a group.
inline std::int32_t WriteSamples(CSCFileWriterContainer& container, std::span<std::int16_t> samples,
                                 std::uint32_t samplesPerChannel, ChannelGroup group,
                                 std::optional<std::uint64_t> time) {
    const SampleBlock block{samples, time};
    return container.WriteSamples({&block, 1}, samplesPerChannel, group);
}

/** Open channel files: 16 A/D channels of 30 kHz, offset 1000 µs. */
struct OpenChannels {
    explicit OpenChannels(const ChannelOptions& options = kADOnly,
                          std::uint32_t recordsPerWrite = 0)
        : container(ChannelSettings(recordsPerWrite)) {
        container.numAdChannels = 16;
        container.samplingFrequency = 30000;
        container.timestampOffset = 1000;
        EXPECT_EQ(container.InitializeCscFiles(directory.Path(), options), 0);
    }

    // A block of `samplesPerChannel` equal samples for this many channels.
    std::int32_t Write(std::uint32_t samplesPerChannel, std::optional<std::uint64_t> time,
                       ChannelGroup group = ChannelGroup::kAD, std::size_t channels = 16,
                       std::int16_t value = 1000) {
        std::vector<std::int16_t> samples(channels * samplesPerChannel, value);
        return WriteSamples(container, samples, samplesPerChannel, group, time);
    }
    // In the current record.
    std::uint32_t FilledSamples(std::size_t file) const {
        return container.records[file].filledSamples;
    }
    const VtxDataTypes::CRRec& Record(std::size_t file, std::size_t record) const {
        return container.records[file].cscBuffer[record];
    }
    // A copy, because the field may be unaligned.
    std::uint64_t TimeOf(std::size_t file, std::size_t record) const {
        return Record(file, record).timestamp;
    }

    TempDirectory directory;
    CSCFileWriterContainer container;
};

/** The records after the header of a finished file. */
inline std::vector<VtxDataTypes::CRRec> RecordsOf(const std::wstring& path) {
    const std::string bytes = ReadFile(path).substr(16384);
    EXPECT_EQ(bytes.size() % sizeof(VtxDataTypes::CRRec), 0U);
    std::vector<VtxDataTypes::CRRec> records(bytes.size() / sizeof(VtxDataTypes::CRRec));
    std::memcpy(records.data(), bytes.data(), bytes.size());
    return records;
}

}  // namespace stalwick::test
