// SPDX-License-Identifier: BSD-3-Clause
#include "python/ord_module/sample_order.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "outputs/vtx_data_types.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace stalwick {

namespace {

// Channels and samples that are transposed in registers.
constexpr std::size_t kBlock = 8;
// Number of samples read from one channel before the next, 1 KB: hundreds of channels are too many
// streams for the processor to predict, and rows that are a power of two apart would not stay in
// the cache together.
constexpr std::size_t kRun = 512;

// A range of samples of a range of channels, and where the first one goes.
struct Tile {
    const std::int16_t* const* rows;
    std::size_t channels;
    std::size_t first;
    std::size_t samples;
    std::int16_t* out;
    std::size_t stride;  // from one sample to the next in out
};

void CopyOneByOne(const Tile& tile) {
    for (std::size_t s = 0; s < tile.samples; ++s) {
        for (std::size_t c = 0; c < tile.channels; ++c) {
            tile.out[s * tile.stride + c] = tile.rows[c][tile.first + s];
        }
    }
}

#if defined(__SSE2__)
using Vector = __m128i;

// Eight samples of each of eight channels: three rounds, each of which pairs what is next to it.
void CopyBlock(const Tile& tile, std::size_t sample) {
    Vector in[kBlock];
    for (std::size_t c = 0; c < kBlock; ++c) {
        const std::int16_t* from = tile.rows[c] + tile.first + sample;
        in[c] = _mm_loadu_si128(reinterpret_cast<const Vector*>(from));
    }
    Vector pairs[kBlock];
    for (std::size_t c = 0; c < kBlock; c += 2) {
        pairs[c / 2] = _mm_unpacklo_epi16(in[c], in[c + 1]);
        pairs[c / 2 + 4] = _mm_unpackhi_epi16(in[c], in[c + 1]);
    }
    Vector fours[kBlock];
    for (std::size_t half = 0; half < kBlock; half += 4) {
        for (std::size_t c = 0; c < 2; ++c) {
            fours[half + c] = _mm_unpacklo_epi32(pairs[half + 2 * c], pairs[half + 2 * c + 1]);
            fours[half + 2 + c] = _mm_unpackhi_epi32(pairs[half + 2 * c], pairs[half + 2 * c + 1]);
        }
    }
    std::int16_t* to = tile.out + sample * tile.stride;
    for (std::size_t pair = 0; pair < kBlock; pair += 2) {
        const Vector even = _mm_unpacklo_epi64(fours[pair], fours[pair + 1]);
        const Vector odd = _mm_unpackhi_epi64(fours[pair], fours[pair + 1]);
        _mm_storeu_si128(reinterpret_cast<Vector*>(to + pair * tile.stride), even);
        _mm_storeu_si128(reinterpret_cast<Vector*>(to + (pair + 1) * tile.stride), odd);
    }
}
#endif

void CopyTile(const Tile& tile) {
#if defined(__SSE2__)
    if (tile.channels == kBlock) {
        const std::size_t whole = tile.samples - tile.samples % kBlock;
        for (std::size_t sample = 0; sample < whole; sample += kBlock) CopyBlock(tile, sample);
        CopyOneByOne({tile.rows, kBlock, tile.first + whole, tile.samples - whole,
                      tile.out + whole * tile.stride, tile.stride});
        return;
    }
#endif
    CopyOneByOne(tile);
}

constexpr std::size_t kRecordSamples = VtxDataTypes::kSamplesPerRecord;
constexpr std::size_t kHeadWords = 5;
constexpr std::size_t kChannelWord = 2;
constexpr std::size_t kHeadBytes = kHeadWords * sizeof(std::uint32_t);
constexpr std::size_t kRecordBytes = sizeof(VtxDataTypes::CRRec);
static_assert(kRecordBytes == kHeadBytes + kRecordSamples * sizeof(std::int16_t));

bool HasHead(const std::uint8_t* record, std::span<const std::uint32_t> expected,
             std::uint32_t channelNumber) {
    std::uint32_t head[kHeadWords];
    std::memcpy(head, record, sizeof head);
    head[kChannelWord] ^= channelNumber;
    return std::memcmp(head, expected.data(), sizeof head) == 0;
}

}  // namespace

std::optional<std::size_t> InterleaveRecords(const MappedRecords& records, std::size_t skipped,
                                             std::size_t count, std::int16_t* out) {
    const std::size_t channels = records.files.size();
    std::vector<const std::int16_t*> rows(channels);
    std::size_t done = 0;
    for (std::size_t record = 0; done < count; ++record) {
        const std::size_t byte = (records.firstRecord + record) * kRecordBytes;
        const auto head = records.heads.subspan(record * kHeadWords, kHeadWords);
        for (std::size_t c = 0; c < channels; ++c) {
            const std::uint8_t* start = records.files[c] + byte;
            if (!HasHead(start, head, records.channelNumbers[c])) return c;
            rows[c] = reinterpret_cast<const std::int16_t*>(start + kHeadBytes) + skipped;
        }
        const std::size_t part = std::min(kRecordSamples - skipped, count - done);
        InterleaveChannels(rows, part, out + done * channels);
        done += part;
        skipped = 0;
    }
    return std::nullopt;
}

void InterleaveChannels(std::span<const std::int16_t* const> rows, std::size_t count,
                        std::int16_t* out) {
    const std::size_t channels = rows.size();
    for (std::size_t sample = 0; sample < count; sample += kRun) {
        const std::size_t samples = std::min(kRun, count - sample);
        for (std::size_t channel = 0; channel < channels; channel += kBlock) {
            CopyTile({&rows[channel], std::min(kBlock, channels - channel), sample, samples,
                      out + sample * channels + channel, channels});
        }
    }
}

}  // namespace stalwick
