// SPDX-License-Identifier: BSD-3-Clause
#include "survey/ttl_spans.h"

namespace stalwick {

void TtlSpans::Take(const ORDDataPacket& packet, double seconds) {
    JoinTtlValues(packet, values_);
    for (std::size_t i = 0; i < values_.size(); ++i) {
        TakeValue(values_[i], seconds + static_cast<double>(i) * samplePeriod_);
    }
    until_ = seconds + kSamplesPerPacket * samplePeriod_;
}

void TtlSpans::TakeValue(std::uint8_t value, double seconds) {
    const auto changed = static_cast<unsigned>(value ^ value_);
    if (changed == 0) return;
    for (std::size_t line = 0; line < kTtlLines; ++line) {
        if ((changed >> line & 1U) == 0) continue;
        if ((unsigned{value} >> line & 1U) != 0) {
            since_[line] = seconds;
        } else {
            lines_[line].Add({since_[line], seconds, 1, 0});
        }
    }
    value_ = value;
}

void TtlSpans::Break() {
    TakeValue(0, until_);
}

void TtlSpans::Coarsen(double columnSeconds) {
    if (columnSeconds == columnSeconds_) return;
    columnSeconds_ = columnSeconds;
    for (TimeSpans& line : lines_) line.Coarsen(columnSeconds);
}

}  // namespace stalwick
