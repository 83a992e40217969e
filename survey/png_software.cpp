// SPDX-License-Identifier: BSD-3-Clause
#include "survey/png_software.h"

#include <cstdint>

namespace stalwick {

namespace {

// The checksum of PNG chunks, bit by bit.
std::uint32_t Crc32(std::string_view bytes) {
    constexpr std::uint32_t kPolynomial = 0xEDB88320;
    std::uint32_t crc = UINT32_MAX;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? kPolynomial : 0U);
    }
    return ~crc;
}

std::string BigEndian(std::uint32_t number) {
    std::string bytes;
    for (unsigned shift = 32; shift != 0; shift -= 8) {
        bytes += static_cast<char>(number >> (shift - 8) & 0xFFU);
    }
    return bytes;
}

}  // namespace

std::string PngSoftwareChunk(std::string_view software) {
    std::string text = "tEXtSoftware";
    text += '\0';
    text += software;
    constexpr std::size_t kTypeSize = 4;  // does not count in the length
    return BigEndian(static_cast<std::uint32_t>(text.size() - kTypeSize)) + text +
           BigEndian(Crc32(text));
}

}  // namespace stalwick
