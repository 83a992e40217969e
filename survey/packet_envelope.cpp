// SPDX-License-Identifier: BSD-3-Clause
#include "survey/packet_envelope.h"

#include <algorithm>

#include "ord/ord_format.h"
#include "survey/channel_mask.h"

namespace stalwick {

namespace {

// Loops with one store each, which compilers turn into vector instructions: a picture would spend
// nearly all its time here, besides decoding.
void KeepSmallest(const std::int16_t* samples, std::size_t count, std::int16_t* smallest) {
    for (std::size_t i = 0; i < count; ++i) {
        smallest[i] = samples[i] < smallest[i] ? samples[i] : smallest[i];
    }
}

void KeepLargest(const std::int16_t* samples, std::size_t count, std::int16_t* largest) {
    for (std::size_t i = 0; i < count; ++i) {
        largest[i] = samples[i] > largest[i] ? samples[i] : largest[i];
    }
}

}  // namespace

PacketEnvelope::PacketEnvelope(const Stretch& stretch)
    : stretch_(stretch), samplePeriod_(1.0 / stretch.samplesPerSecond), isAligned_(true) {
    scale_.originSeconds = stretch.startSeconds;
    scale_.columns = stretch.columns;
    if (!stretch.seconds) {
        // Packets begin with columns, so that rounding splits no packet.
        scale_.originSeconds -= samplePeriod_ / 2.0;
        scale_.columnSeconds = kSamplesPerPacket * samplePeriod_;
        return;
    }
    scale_.columnSeconds = *stretch.seconds / static_cast<double>(stretch.columns);
    isAligned_ = scale_.columnSeconds >= samplePeriod_;
}

void PacketEnvelope::Take(const ORDDataPacket& packet, double seconds) {
    if (!packet.adSamples) return;
    if (!isAligned_) {
        scale_ = ScaleOfSamples(stretch_.startSeconds, *stretch_.seconds, {seconds, samplePeriod_});
        isAligned_ = true;
    }
    const std::size_t slots = std::min(packet.adSamples->size(), kMostSlots);
    if (slots != slots_ || *packet.channelMask != channelMask_) ChangeShape(packet);
    const double lastSeconds = seconds + (kSamplesPerPacket - 1) * samplePeriod_;
    if (!stretch_.seconds) WidenUntil(lastSeconds);
    const std::int64_t first = scale_.ColumnOf(seconds);
    const std::int64_t last = scale_.ColumnOf(lastSeconds);
    const auto* const samples = reinterpret_cast<const std::int16_t*>(packet.adSamples->data());
    const auto columns = static_cast<std::int64_t>(scale_.columns);
    if (last < 0 || first >= columns) return;
    if (first == last) {
        TakeWhole(samples, first);
    } else {
        TakeEach(samples, seconds);
    }
}

void PacketEnvelope::Finish() {
    FoldPending();
}

void PacketEnvelope::ChangeShape(const ORDDataPacket& packet) {
    FoldPending();
    slots_ = std::min(packet.adSamples->size(), kMostSlots);
    channelMask_ = *packet.channelMask;
    for (std::size_t channel = 0; channel < slots_ / kSamplesPerPacket; ++channel) {
        enabled_[channel] = IsChannelRecorded(channelMask_, channel);
    }
}

void PacketEnvelope::WidenUntil(double seconds) {
    while (scale_.ColumnOf(seconds) >= static_cast<std::int64_t>(scale_.columns)) {
        FoldPending();
        MergePairs();
    }
}

void PacketEnvelope::MergePairs() {
    scale_.columnSeconds *= 2.0;
    for (std::vector<ColumnRange>& row : rows_) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            const ColumnRange range = row[column];
            row[column] = {};
            if (!range.IsEmpty()) row[column / 2].Add(range.smallest, range.largest);
        }
    }
}

void PacketEnvelope::TakeWhole(const std::int16_t* samples, std::int64_t column) {
    if (column != pendingColumn_) {
        FoldPending();
        pendingColumn_ = column;
        std::copy_n(samples, slots_, smallest_.begin());
        std::copy_n(samples, slots_, largest_.begin());
        return;
    }
    KeepSmallest(samples, slots_, smallest_.data());
    KeepLargest(samples, slots_, largest_.data());
}

void PacketEnvelope::FoldPending() {
    if (pendingColumn_ < 0) return;
    const auto column = static_cast<std::size_t>(pendingColumn_);
    pendingColumn_ = -1;
    for (std::size_t channel = 0; channel < slots_ / kSamplesPerPacket; ++channel) {
        if (!enabled_[channel]) continue;
        const std::size_t slot = channel * kSamplesPerPacket;
        const auto* const low = smallest_.data() + slot;
        const auto* const high = largest_.data() + slot;
        RowOf(channel)[column].Add(*std::min_element(low, low + kSamplesPerPacket),
                                   *std::max_element(high, high + kSamplesPerPacket));
    }
}

void PacketEnvelope::TakeEach(const std::int16_t* samples, double seconds) {
    for (std::size_t i = 0; i < kSamplesPerPacket; ++i) {
        const std::int64_t column =
            scale_.ColumnOf(seconds + static_cast<double>(i) * samplePeriod_);
        if (column < 0 || column >= static_cast<std::int64_t>(scale_.columns)) continue;
        for (std::size_t channel = 0; channel < slots_ / kSamplesPerPacket; ++channel) {
            if (!enabled_[channel]) continue;
            const std::int16_t sample = samples[channel * kSamplesPerPacket + i];
            RowOf(channel)[static_cast<std::size_t>(column)].Add(sample, sample);
        }
    }
}

std::vector<ColumnRange>& PacketEnvelope::RowOf(std::size_t channel) {
    std::vector<ColumnRange>& row = rows_[channel];
    if (row.empty()) row.resize(scale_.columns);
    return row;
}

}  // namespace stalwick
