// SPDX-License-Identifier: BSD-3-Clause
#include "survey/raw_record_check.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "outputs/raw_record.h"
#include "survey/forward_reader.h"

namespace stalwick {

namespace {

constexpr std::array<std::uint32_t, 4> kPacketWidths = {32, 64, 128, 256};  // channels
constexpr std::size_t kMostWords = RawRecordWords(kPacketWidths.back());
constexpr std::size_t kWordSize = sizeof(std::uint32_t);
constexpr std::size_t kReadAhead = std::size_t{1} << 19U;  // bytes
constexpr std::uint64_t kRecordsPerPacket = 10;

using Words = std::array<std::uint32_t, kMostWords>;

class RawRecordCheck {
  public:
    RawRecordCheck(const OutputInSet& output, const RecordFile& file, TimeSteps& steps,
                   FindingLog& log)
        : reader_(file, kReadAhead),
          steps_(steps),
          log_(log),
          sizeWord_(static_cast<std::uint32_t>(output.header.Number(L"-NumADChannels").value_or(0) +
                                               kRawSizeBesideSamples)) {}

    RawTotals Run() {
        while (!reader_.Look(1).empty()) {
            if (const std::size_t words = SoundWords(0); words != 0) {
                TakeRecord(words);
            } else {
                TakeDamaged();
            }
        }
        if (!reader_.Error().empty()) {
            log_.Add({totals_.records, reader_.Position()},
                     L"it could not be read further: " + reader_.Error());
        } else if (log_.Count() == 0 && recordInPacket_ != 0) {
            log_.Add({totals_.records, reader_.Position()},
                     L"the file ends inside the ten records of a packet");
        }
        return totals_;
    }

  private:
    std::span<const std::uint32_t> WordsAt(std::size_t byte, std::size_t count) {
        const auto bytes = reader_.Look(byte + count * kWordSize);
        if (bytes.size() < byte + count * kWordSize) return {};
        std::memcpy(words_.data(), bytes.data() + byte, count * kWordSize);
        return std::span(words_).first(count);
    }

    bool IsSound(std::size_t byte, std::size_t count) {
        const auto marker = WordsAt(byte, 1);
        if (marker.empty() || marker[kRawStartMarkerWord] != kRawStartMarker) return false;
        const auto words = WordsAt(byte, count);
        return !words.empty() && RawChecksum(words) == 0;
    }

    // The number of words of the record with a start marker and a correct checksum that begins that
    // many bytes ahead; 0 if there is none.
    std::size_t SoundWords(std::size_t byte) {
        if (IsSound(byte, lastWords_)) return lastWords_;
        for (const std::uint32_t width : kPacketWidths) {
            if (IsSound(byte, RawRecordWords(width))) return RawRecordWords(width);
        }
        return 0;
    }

    FindingPlace Place(std::size_t word = 0) const {
        return {totals_.records, reader_.Position() + word * kWordSize};
    }

    void TakeRecord(std::size_t count) {
        lastWords_ = count;
        const auto words = WordsAt(0, count);
        CheckFields(words);
        const RawRecordView record(words);
        const std::uint64_t time = record.Timestamp();
        steps_.CheckOrder(time, Place());
        // Within a packet times run slow, truncated at every sample.
        if (recordInPacket_ == 0) steps_.CheckGap(time, kRecordsPerPacket, Place());
        if (lastTtl_ && *lastTtl_ != record.TtlValue()) ++totals_.ttlChanges;
        lastTtl_ = record.TtlValue();
        Advance(count * kWordSize);
    }

    void Advance(std::size_t bytes) {
        reader_.Skip(bytes);
        ++totals_.records;
        recordInPacket_ = (recordInPacket_ + 1) % kRecordsPerPacket;
    }

    // Reports the first fixed word that is wrong. Returns true if there is none.
    bool CheckFields(std::span<const std::uint32_t> words) {
        for (std::size_t i = 0; i < kRawFirstSampleWord; ++i) {
            const PrescribedWord word = Prescribed(i, words[i]);
            if (words[i] == word.value) continue;
            log_.Add(Place(i), std::wstring(L"its ") + word.name + L" is " +
                                   std::to_wstring(words[i]) + L", not " +
                                   std::to_wstring(word.value));
            return false;
        }
        return true;
    }

    struct PrescribedWord {
        std::uint32_t value;
        const wchar_t* name;
    };
    // For a word that is not fixed, the allowed value nearest to `actual`.
    PrescribedWord Prescribed(std::size_t word, std::uint32_t actual) const {
        constexpr std::uint32_t kLargestTtl = 255;
        switch (word) {
            case kRawStartMarkerWord:
                return {kRawStartMarker, L"start marker"};
            case kRawRecordIdWord:
                return {kRawRecordId, L"record identifier"};
            case kRawSizeWord:
                return {sizeWord_, L"size word"};
            case kRawTtlWord:
                return {std::min(actual, kLargestTtl), L"TTL value"};
            case kRawTimestampHighWord:
            case kRawTimestampLowWord:
                return {actual, L"time"};
            default:
                return {0, L"word that is always 0"};
        }
    }

    // The number of bytes of the current damaged record, if what follows determines it: a sound
    // record, or the end.
    std::size_t DamagedSize() {
        const auto endsThere = [&](std::size_t count) {
            const std::size_t size = count * kWordSize;
            if (WordsAt(0, count).empty()) return false;
            return reader_.Look(size + 1).size() == size || SoundWords(size) != 0;
        };
        if (endsThere(lastWords_)) return lastWords_ * kWordSize;
        for (const std::uint32_t width : kPacketWidths) {
            if (endsThere(RawRecordWords(width))) return RawRecordWords(width) * kWordSize;
        }
        return 0;
    }

    void TakeDamaged() {
        steps_.Break();
        lastTtl_.reset();
        if (const std::size_t size = DamagedSize(); size != 0) {
            const std::size_t count = size / kWordSize;
            const auto words = WordsAt(0, count);
            if (CheckFields(words)) {
                log_.Add(Place(count - 1),
                         L"its checksum is " + std::to_wstring(words[count - 1]) + L", not " +
                             std::to_wstring(RawChecksum(words.first(count - 1))));
            }
            return Advance(size);
        }
        SkipToSoundRecord();
    }

    // There is no record where one should follow.
    void SkipToSoundRecord() {
        const FindingPlace place = Place();
        do {
            reader_.Skip(std::min(kWordSize, reader_.Look(kWordSize).size()));
        } while (!reader_.Look(1).empty() && SoundWords(0) == 0);
        const std::wstring bytes = std::to_wstring(reader_.Position() - *place.byte);
        if (reader_.Look(1).empty()) {
            log_.Add(place, L"the file ends inside it, after " + bytes + L" bytes");
            return;
        }
        log_.Add(place, L"there is no record here; the next one begins " + bytes + L" bytes later");
        recordInPacket_ = 0;  // most likely
    }

    ForwardReader reader_;
    TimeSteps& steps_;
    FindingLog& log_;
    std::uint32_t sizeWord_;
    std::size_t lastWords_ = RawRecordWords(kPacketWidths.front());
    Words words_{};
    RawTotals totals_;
    std::uint64_t recordInPacket_ = 0;
    std::optional<std::uint32_t> lastTtl_;
};

}  // namespace

RawTotals CheckRawRecords(const OutputInSet& output, const RecordFile& file, TimeSteps& steps,
                          FindingLog& log) {
    return RawRecordCheck(output, file, steps, log).Run();
}

}  // namespace stalwick
