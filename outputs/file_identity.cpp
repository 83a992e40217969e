// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/file_identity.h"

#include <algorithm>
#include <random>

#include "platform/local_time.h"
#include "platform/random_seed.h"

namespace stalwick {

Uuid MakeUuid() {
    std::mt19937_64 generator(RandomSeed());
    Uuid uuid{};
    for (std::size_t half = 0; half < 2; ++half) {
        const std::uint64_t bits = generator();
        for (std::size_t i = 0; i < 8; ++i) {
            uuid[half * 8 + i] = static_cast<std::uint8_t>(bits >> (8 * i));
        }
    }
    uuid[6] = (uuid[6] & 0x0FU) | 0x40U;
    uuid[8] = (uuid[8] & 0x3FU) | 0x80U;
    return uuid;
}

// A text stream would swallow a failing allocation and return half a text.
std::wstring PadWithZeros(std::int32_t number, std::size_t width) {
    const std::wstring digits = std::to_wstring(number);
    return std::wstring(width - std::min(width, digits.size()), L'0') + digits;
}

std::wstring FormatLocalTime() {
    const LocalTime now = CurrentLocalTime();
    return PadWithZeros(now.year, 4) + L'/' + PadWithZeros(now.month, 2) + L'/' +
           PadWithZeros(now.day, 2) + L' ' + PadWithZeros(now.hour, 2) + L':' +
           PadWithZeros(now.minute, 2) + L':' + PadWithZeros(now.second, 2);
}

}  // namespace stalwick
