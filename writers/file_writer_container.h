// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "writers/output_file_record.h"
#include "writers/output_settings.h"
#include "writers/vtx_file_io.h"

namespace stalwick {

// A packet as the writers take it, regardless of the recording's header.
inline constexpr std::uint32_t kPacketSamples = 10;  // of a channel, under one base timestamp
inline constexpr std::uint32_t kMostPacketChannels = 256;

// What every kind of output has: a library object and a record for each file. The conversion fills
// the plain fields from the recording's header before it opens the outputs; a container serves one
// recording and one thread.
class FileWriterContainer {
  public:
    // `queue`, which must outlive the container, appends full blocks to the files; if null, the
    // container does.
    explicit FileWriterContainer(const OutputSettings& outputSettings, WriteQueue* queue = nullptr)
        : settings(outputSettings), blocks(queue), fileIO(outputSettings, &blocks) {}
    virtual ~FileWriterContainer() = default;
    FileWriterContainer(const FileWriterContainer&) = delete;
    FileWriterContainer& operator=(const FileWriterContainer&) = delete;

    const OutputSettings settings;
    BlockPool blocks;  // before the files: it holds the data they still wait for
    Veltrosyn::VtxFileIO fileIO;
    std::vector<OutputFileRecord> records;  // in the order of opening
    std::uint32_t samplingFrequency = 0;    // of the A/D channels, samples per second
    std::uint32_t phaseModulus = kPacketSamples;
    std::uint64_t timestampOffset = 0;  // microseconds, added to record timestamps modulo 2^64
    std::wstring sessionUuid;
    std::wstring acquisitionSystem;
};

}  // namespace stalwick
