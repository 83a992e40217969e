// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "ord/ord_data_packet.h"
#include "survey/sample_block.h"
#include "survey/trace_set.h"

namespace stalwick {

// The smallest and the largest sample of each channel in each column of a picture, packet by
// packet. Its memory does not depend on the number of packets.
class PacketEnvelope {
  public:
    struct Stretch {
        double startSeconds = 0.0;
        std::optional<double> seconds;  // none: columns widen as time goes by
        double samplesPerSecond = 0.0;
        std::size_t columns = 0;
    };

    explicit PacketEnvelope(const Stretch& stretch);

    // Takes a packet's samples; the first one has this time. Samples outside the stretch are left
    // out.
    void Take(const ORDDataPacket& packet, double seconds);
    // Call it after the last packet.
    void Finish();

    const ColumnScale& Scale() const { return scale_; }
    // For a channel, from 0; empty if it had no samples in the stretch.
    const std::vector<ColumnRange>& Columns(std::size_t channel) const { return rows_[channel]; }

  private:
    void ChangeShape(const ORDDataPacket& packet);
    void WidenUntil(double seconds);
    void MergePairs();
    void TakeWhole(const std::int16_t* samples, std::int64_t column);
    void TakeEach(const std::int16_t* samples, double seconds);
    void FoldPending();
    std::vector<ColumnRange>& RowOf(std::size_t channel);

    Stretch stretch_;
    ColumnScale scale_;
    double samplePeriod_;  // seconds
    bool
        isAligned_;  // otherwise there are fewer samples than columns, and each gets its own column
    std::array<std::vector<ColumnRange>, kMostADChannels> rows_;

    // For packets within one column, only slots are compared until the column is complete.
    std::int64_t pendingColumn_ = -1;
    std::size_t slots_ = 0;
    std::vector<std::uint8_t> channelMask_;  // of the packets; empty: all channels
    std::array<bool, kMostADChannels> enabled_{};
    std::array<std::int16_t, kMostSlots> smallest_{};
    std::array<std::int16_t, kMostSlots> largest_{};
};

}  // namespace stalwick
