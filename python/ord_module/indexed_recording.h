// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ord/ord_data_packet.h"
#include "ord/recording_header.h"
#include "platform/input_file.h"

namespace stalwick {

// The kinds of values in a recording, in the order of the index's tables.
enum class SampleGroup : std::uint32_t { kAD, kBaseImu, kAfeImu, kUltrasonic };
inline constexpr std::size_t kSampleGroups = 4;

// A span of the stream as the converter decodes it: 50,000 bytes or the rest of the file.
struct IndexedSpan {
    std::uint64_t position = 0;                        // byte in the file
    std::array<std::uint64_t, kSampleGroups> first{};  // samples per channel before it, by group
};

// The position of every sample of a recording, as plain values that can be stored and restored.
struct RecordingIndex {
    std::vector<IndexedSpan> spans;
    std::array<std::vector<std::uint64_t>, kSampleGroups> recordTimes;  // microseconds
    std::array<std::uint64_t, kSampleGroups> samples{};                 // per channel
    std::uint32_t carriedChannels = 0;      // A/D channels that every packet with samples describes
    std::vector<std::uint64_t> eventTimes;  // microseconds
    std::vector<std::uint8_t> eventValues;
    std::optional<std::uint8_t> firstTtl;  // before the first event
    std::uint64_t end = 0;                 // byte after the last whole packet
    bool endsInDamage = false;             // no packet begins there, not even a truncated one
};

// A range of channels' samples, and their destination: rows[i][0] is sample `start` of channels[i].
struct SampleRequest {
    SampleGroup group = SampleGroup::kAD;
    std::vector<std::uint32_t> channels;
    std::uint64_t start = 0;
    std::uint64_t count = 0;
    std::vector<std::int16_t*> rows;
};

// Reads samples of a recording by number, with the same values as in the channel files. Errors are
// exceptions of std::runtime_error with one line of text. Used by one thread.
class IndexedRecording {
  public:
    explicit IndexedRecording(const std::wstring& path);

    const RecordingHeader& Header() const { return header_; }

    // Decodes the whole recording once.
    RecordingIndex BuildIndex() const;

    // Decodes the spans that hold the requested samples, long requests on two threads. All samples
    // must exist.
    void Read(const RecordingIndex& index, const SampleRequest& request) const;

  private:
    void ReadPart(const RecordingIndex& index, const SampleRequest& request) const;

    std::wstring path_;
    RecordingHeader header_;
    InputFile file_;
};

}  // namespace stalwick
