// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace stalwick {

// A record of the raw data file: 32-bit words, drawn in docs/output-files.md. With A A/D channels
// in the header it has A + 18 words; a packet that carries another number of channels leads to
// records with that number of samples.

// Positions of words, from the first word of the record. Words 7 to 16 are 0.
inline constexpr std::size_t kRawStartMarkerWord = 0;
inline constexpr std::size_t kRawRecordIdWord = 1;
inline constexpr std::size_t kRawSizeWord = 2;
inline constexpr std::size_t kRawTimestampHighWord = 3;  // microseconds
inline constexpr std::size_t kRawTimestampLowWord = 4;
inline constexpr std::size_t kRawStatusWord = 5;
inline constexpr std::size_t kRawTtlWord = 6;
inline constexpr std::size_t kRawFirstSampleWord = 17;

inline constexpr std::uint32_t kRawStartMarker = 2048;
inline constexpr std::uint32_t kRawRecordId = 1;
inline constexpr std::uint32_t kRawStatus = 0;
inline constexpr std::uint32_t kRawSizeBesideSamples = 10;  // as the size word counts
inline constexpr std::size_t kRawWordsBesideSamples = kRawFirstSampleWord + 1;  // and the checksum

constexpr std::size_t RawRecordWords(std::uint32_t adChannelCount) {
    return adChannelCount + kRawWordsBesideSamples;
}

// The last word of a record: the exclusive or of all words before it.
[[nodiscard]] constexpr std::uint32_t RawChecksum(std::span<const std::uint32_t> wordsBeforeIt) {
    std::uint32_t checksum = 0;
    for (const std::uint32_t word : wordsBeforeIt) checksum ^= word;
    return checksum;
}

// A view of the words of one record, at least kRawWordsBesideSamples of them. They must outlive the
// view. Nothing is checked.
class RawRecordView {
  public:
    explicit RawRecordView(std::span<const std::uint32_t> words) : words_(words) {}

    [[nodiscard]] std::uint32_t StartMarker() const { return words_[kRawStartMarkerWord]; }
    [[nodiscard]] std::uint32_t RecordId() const { return words_[kRawRecordIdWord]; }
    [[nodiscard]] std::uint32_t SizeWord() const { return words_[kRawSizeWord]; }
    [[nodiscard]] std::uint64_t Timestamp() const {  // microseconds
        return std::uint64_t{words_[kRawTimestampHighWord]} << 32U | words_[kRawTimestampLowWord];
    }
    [[nodiscard]] std::uint32_t Status() const { return words_[kRawStatusWord]; }
    [[nodiscard]] std::uint32_t TtlValue() const { return words_[kRawTtlWord]; }
    std::size_t SampleCount() const { return words_.size() - kRawWordsBesideSamples; }
    [[nodiscard]] std::int32_t Sample(std::size_t channel) const {
        return static_cast<std::int32_t>(words_[kRawFirstSampleWord + channel]);
    }
    [[nodiscard]] std::uint32_t Checksum() const { return words_.back(); }
    [[nodiscard]] bool ChecksumIsRight() const {
        return Checksum() == RawChecksum(words_.first(words_.size() - 1));
    }
    [[nodiscard]] std::span<const std::uint32_t> Words() const { return words_; }

  private:
    std::span<const std::uint32_t> words_;
};

}  // namespace stalwick
