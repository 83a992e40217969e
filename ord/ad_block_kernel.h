// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "ord/ad_block_plan.h"

namespace stalwick {

// A way to decode a block whose every bit is inside the span. All of them return the same samples;
// the machine determines which exist.
struct ADBlockKernel {
    std::string name;  // "scalar", or the instruction set as Highway calls it
    // Writes samples[channel * samplesPerChannel + i] of all planned channels, 0 for those that are
    // not enabled. May read kKernelOverrun bytes after the block's last byte.
    void (*decode)(const std::uint8_t* data, const ADBlockPlan& plan,
                   std::uint32_t samplesPerChannel, std::uint16_t* samples) = nullptr;
};

inline constexpr std::size_t kKernelOverrun = 16;

// The kernels that this machine can run, the fastest first, "scalar" last.
[[nodiscard]] std::span<const ADBlockKernel> AvailableADBlockKernels();

// The kernel in use: the fastest, unless a test has chosen another.
const ADBlockKernel& CurrentADBlockKernel();

// For tests and benchmarks: selects `kernel` (null: the fastest). Call it only while no other
// thread decodes.
void SetADBlockKernel(const ADBlockKernel* kernel);

// One 64-bit load for each value. Any number of samples per channel.
void DecodePlannedBlockScalar(const std::uint8_t* data, const ADBlockPlan& plan,
                              std::uint32_t samplesPerChannel, std::uint16_t* samples);

}  // namespace stalwick
