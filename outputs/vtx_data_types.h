// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The records and enumerations exchanged with the data file library. docs/output-files.md draws
// the layouts; all numbers are little-endian, nothing is padded.
namespace VtxDataTypes {

enum VtxDataType : std::int32_t {
    kInvalid = 0,
    kSingleElectrode = 1,
    kStereotrode = 2,
    kTimestamp = 3,
    kTetrode = 4,
    kCSC = 5,
    kEvent = 6,
    kVideo = 7,
    kRaw = 8,
    kMClustTS = 9,
    kVCC = 10,
    kSessionIndex = 11,
    kSubject = 12,
    kDataProcessingErrors = 13,
    kPersystLayout = 14,
    kPersystData = 15,
    kStimulationData = 16
};

// Result of every library operation: 0 is success, anything else failure.
enum VtxRetVal : std::int32_t {
    kSuccess = 0,
    kFailure = 1,
    kFileExists = 2  // another file has taken the name in the meantime
};

inline constexpr std::size_t kSamplesPerRecord = 512;
inline constexpr std::size_t kEventStringSize = 128;

#pragma pack(push, 1)

// One record of a continuously sampled channel.
struct CRRec {
    std::uint64_t timestamp;      // microseconds, of the first sample
    std::uint32_t channelNumber;  // from 0 within the channel's group
    std::uint32_t sampleFrequency;
    std::uint32_t numValidSamples;                        // 0 to 512
    std::array<std::int16_t, kSamplesPerRecord> samples;  // in time order, unused ones 0
};

// One event.
struct EventRec {
    std::array<std::uint16_t, 3> reserved;
    std::uint64_t timestamp;  // microseconds
    std::uint16_t eventId;
    std::uint16_t ttlValue;  // 0 to 255
    std::array<std::uint8_t, 38> reserved2;
    std::array<char, kEventStringSize> eventString;  // zero-terminated
};

#pragma pack(pop)

static_assert(sizeof(CRRec) == 1044);
static_assert(offsetof(CRRec, timestamp) == 0);
static_assert(offsetof(CRRec, channelNumber) == 8);
static_assert(offsetof(CRRec, sampleFrequency) == 12);
static_assert(offsetof(CRRec, numValidSamples) == 16);
static_assert(offsetof(CRRec, samples) == 20);

static_assert(sizeof(EventRec) == 184);
static_assert(offsetof(EventRec, timestamp) == 6);
static_assert(offsetof(EventRec, eventId) == 14);
static_assert(offsetof(EventRec, ttlValue) == 16);
static_assert(offsetof(EventRec, reserved2) == 18);
static_assert(offsetof(EventRec, eventString) == 56);

}  // namespace VtxDataTypes
