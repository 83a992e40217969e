// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <vector>

#include "ord/ad_block_kernel.h"

namespace stalwick {

// The kernels of every vector instruction set of this machine, the best first; none in a build
// without Highway.
[[nodiscard]] std::vector<ADBlockKernel> ListSimdADBlockKernels();

}  // namespace stalwick
