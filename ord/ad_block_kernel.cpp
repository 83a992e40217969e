// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_kernel.h"

#include <vector>

#include "ord/ad_block_simd.h"

namespace stalwick {

namespace {

const ADBlockKernel* chosenForTest = nullptr;

std::vector<ADBlockKernel> ListKernels() {
    std::vector<ADBlockKernel> kernels = ListSimdADBlockKernels();
    kernels.push_back({"scalar", DecodePlannedBlockScalar});
    return kernels;
}

}  // namespace

std::span<const ADBlockKernel> AvailableADBlockKernels() {
    static const std::vector<ADBlockKernel> kernels = ListKernels();
    return kernels;
}

const ADBlockKernel& CurrentADBlockKernel() {
    static const ADBlockKernel& fastest = AvailableADBlockKernels().front();
    return chosenForTest != nullptr ? *chosenForTest : fastest;
}

void SetADBlockKernel(const ADBlockKernel* kernel) {
    chosenForTest = kernel;
}

}  // namespace stalwick
