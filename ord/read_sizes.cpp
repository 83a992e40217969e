// SPDX-License-Identifier: BSD-3-Clause
#include "ord/read_sizes.h"

namespace stalwick {

namespace {
ReadSizes sizesInUse;
}  // namespace

ReadSizes CurrentReadSizes() {
    return sizesInUse;
}

void SetReadSizes(const ReadSizes& sizes) {
    sizesInUse = sizes;
}

}  // namespace stalwick
