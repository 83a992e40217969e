// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "outputs/file_identity.h"
#include "outputs/vtx_data_types.h"

namespace stalwick {

// One output file of a writer container: its header values and its buffers. The buffers are blocks
// of the container's pool; only the event file owns its buffer. The members that every packet
// changes come first, in one cache line: a packet touches hundreds of records.
struct alignas(64) OutputFileRecord {
    std::span<VtxDataTypes::CRRec> cscBuffer;  // of a channel file; none after a failed write
    std::int16_t* nextSample = nullptr;        // position of the channel file's next sample
    std::uint32_t filledSamples = 0;           // before it in its record
    std::uint32_t bufferedCount = 0;           // complete records; of the raw data file: words
    std::uint64_t lastBaseTimestamp = 0;       // nanoseconds; 0: none yet
    std::uint32_t phaseModulus = 0;            // samples per base timestamp
    std::uint32_t phase = 0;                   // of the next sample after the last base timestamp
    std::uint64_t writtenCount = 0;  // like bufferedCount, handed to the file before those
    std::vector<VtxDataTypes::EventRec> eventBuffer;  // of the event file
    std::span<std::uint32_t> rawBuffer;               // of the raw data file
    std::int32_t handle = 0;                          // of the data file library
    Uuid fileUuid{};
    std::wstring filePath;
    std::wstring timeCreated;
    std::wstring acqEntName;              // acquisition entity, for example CSC3 or Base_LAX
    std::uint32_t channelIndex = 0;       // from 0 within the file's group
    double samplingFrequency = 0.0;       // samples per second
    std::uint64_t runningTimestamp = 0;   // microseconds, without base timestamps
    std::uint32_t recordSize = 0;         // bytes, as in the header
    double accumulatedTimestamp = 0.0;    // microseconds, not rounded
    std::uint64_t timestampOffset = 0;    // microseconds, added modulo 2^64
    double interpolationFrequency = 0.0;  // samples per second
};

}  // namespace stalwick
