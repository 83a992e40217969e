// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace stalwick::test {

/** Appends bits to a byte string, most significant first within each byte. */
class BitWriter {
  public:
    void WriteBit(bool bit) {
        if (bitCount_ % 8 == 0) bytes_.push_back('\0');
        if (bit) {
            const unsigned last = static_cast<unsigned char>(bytes_.back());
            bytes_.back() = static_cast<char>(last | (0x80U >> (bitCount_ % 8)));
        }
        ++bitCount_;
    }

    /** The lowest `width` bits of `value`, the highest of them first. */
    void WriteBits(std::uint32_t value, unsigned width) {
        for (unsigned i = width; i > 0; --i) WriteBit(((value >> (i - 1)) & 1U) != 0);
    }

    std::size_t BitCount() const { return bitCount_; }

    /** The bits so far; the last byte is filled up with zero bits. */
    const std::string& Bytes() const { return bytes_; }

  private:
    std::string bytes_;
    std::size_t bitCount_ = 0;
};

}  // namespace stalwick::test
