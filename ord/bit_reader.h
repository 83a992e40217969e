// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace stalwick {

// Reads bits most-significant first from a run of bytes. The position never passes the last bit:
// further reads at the end return that last bit again and again. Damaged recordings are decoded by
// this rule; do not change it (pinned by BitReader.ReadsTheLastBitForEverAtTheEnd).
class BitReader {
  public:
    BitReader(const std::uint8_t* data, std::int32_t bitCount) : data_(data), bitCount_(bitCount) {}

    std::int32_t bitCount() const { return bitCount_; }
    std::int32_t position() const { return position_; }

    std::uint32_t ReadBit() {
        if (position_ >= bitCount_) return 0;
        const std::uint32_t byte = data_[position_ / 8];
        const std::uint32_t bit = (byte >> (7 - position_ % 8)) & 1U;
        if (position_ < bitCount_ - 1) ++position_;
        return bit;
    }

    // The next `count` bits as an unsigned number, first bit highest.
    std::uint32_t ReadBits(unsigned count) {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < count; ++i) value = (value << 1U) | ReadBit();
        return value;
    }

  private:
    const std::uint8_t* data_;
    std::int32_t bitCount_;
    std::int32_t position_ = 0;
};

}  // namespace stalwick
