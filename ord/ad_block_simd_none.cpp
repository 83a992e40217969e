// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_simd.h"

namespace stalwick {

std::vector<ADBlockKernel> ListSimdADBlockKernels() {
    return {};
}

}  // namespace stalwick
