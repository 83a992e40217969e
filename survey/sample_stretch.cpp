// SPDX-License-Identifier: BSD-3-Clause
#include "survey/sample_stretch.h"

#include <algorithm>
#include <cstring>

#include "ord/ord_format.h"

namespace stalwick {

SampleStretch::SampleStretch(std::size_t mostSamples)
    : mostSamples_((mostSamples + kSamplesPerPacket - 1) / kSamplesPerPacket * kSamplesPerPacket) {}

bool SampleStretch::Take(const WatchedPacket& watched) {
    const std::vector<std::uint16_t>& samples = *watched.packet.adSamples;
    const std::size_t channels = samples.size() / kSamplesPerPacket;
    if (IsEmpty()) {
        channels_ = channels;
        mask_ = *watched.packet.channelMask;
        startSeconds_ = watched.seconds;
        if (values_.size() < channels * mostSamples_) values_.resize(channels * mostSamples_);
    } else if (IsFull() || !watched.follows || channels != channels_ ||
               mask_ != *watched.packet.channelMask) {
        return false;
    }
    for (std::size_t channel = 0; channel < channels; ++channel) {
        std::memcpy(values_.data() + channel * mostSamples_ + samples_,
                    samples.data() + channel * kSamplesPerPacket,
                    kSamplesPerPacket * sizeof(std::int16_t));
    }
    samples_ += kSamplesPerPacket;
    return true;
}

}  // namespace stalwick
