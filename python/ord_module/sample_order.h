// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace stalwick {

// Samples of channels in the records of channel files, of which each holds 512.
struct MappedRecords {
    std::span<const std::uint8_t* const> files;     // each channel's first record
    std::span<const std::uint32_t> channelNumbers;  // that its records must have
    // The words before the samples of each record that is read, with 0 for the channel's number.
    std::span<const std::uint32_t> heads;
    std::size_t firstRecord = 0;
};

// Copies `count` samples of each channel, without the first `skipped` ones of the first record, to
// out[sample * channels + channel]. Returns the position of a channel with a record that has
// another head; then not all is copied.
[[nodiscard]] std::optional<std::size_t> InterleaveRecords(const MappedRecords& records,
                                                           std::size_t skipped, std::size_t count,
                                                           std::int16_t* out);

// Copies rows[channel][sample], of `count` samples each, to out[sample * channels + channel]. The
// two must not overlap.
void InterleaveChannels(std::span<const std::int16_t* const> rows, std::size_t count,
                        std::int16_t* out);

}  // namespace stalwick
