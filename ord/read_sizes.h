// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>

#include "ord/ord_format.h"

namespace stalwick {

// The pieces in which a recording is read. The format fixes their sizes.
struct ReadSizes {
    std::size_t header = kHeaderBlockSize;  // bytes, at most kHeaderBlockSize
    std::size_t span = kDataBufferSize;     // bytes, at most kDataBufferSize
};

// The sizes for readers constructed from now on: the format's sizes, unless a test has set others.
[[nodiscard]] ReadSizes CurrentReadSizes();

// For tests and fuzzing: short recordings then have as many spans as long ones. Call it only while
// no other thread constructs a reader.
void SetReadSizes(const ReadSizes& sizes);

}  // namespace stalwick
