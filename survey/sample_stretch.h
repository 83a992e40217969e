// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "survey/survey_recording.h"

namespace stalwick {

// Consecutive samples of all channels, up to a length.
class SampleStretch {
  public:
    explicit SampleStretch(std::size_t mostSamples);  // per channel; rounded up to whole packets

    // Adds a packet that has A/D samples. Returns false, and changes nothing, if it does not
    // continue the stretch or if there is no room.
    [[nodiscard]] bool Take(const WatchedPacket& watched);
    // Makes it empty, but keeps the memory.
    void Clear() { samples_ = 0; }

    std::size_t Samples() const { return samples_; }  // per channel
    bool IsEmpty() const { return samples_ == 0; }
    bool IsFull() const { return samples_ == mostSamples_; }
    std::size_t Channels() const { return channels_; }
    double StartSeconds() const { return startSeconds_; }
    const std::vector<std::uint8_t>& ChannelMask() const { return mask_; }

    // In 16-bit steps.
    std::span<const std::int16_t> Channel(std::size_t channel) const {
        return {values_.data() + channel * mostSamples_, samples_};
    }

  private:
    std::size_t mostSamples_;
    std::size_t samples_ = 0;
    std::size_t channels_ = 0;
    double startSeconds_ = 0.0;
    std::vector<std::uint8_t> mask_;
    std::vector<std::int16_t> values_;  // values_[channel * mostSamples_ + i]
};

}  // namespace stalwick
