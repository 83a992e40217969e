// SPDX-License-Identifier: BSD-3-Clause
#include "platform/random_seed.h"

#include <atomic>
#include <random>

namespace stalwick {

namespace {
std::atomic<RandomSeedSource> replacement{nullptr};
}  // namespace

std::uint32_t RandomSeed() {
    const RandomSeedSource source = replacement.load(std::memory_order_acquire);
    if (source != nullptr) return source();
    thread_local std::random_device device;  // takes longer to construct than to use
    return device();
}

RandomSeedSource SetRandomSeedSource(RandomSeedSource source) {
    return replacement.exchange(source, std::memory_order_acq_rel);
}

}  // namespace stalwick
