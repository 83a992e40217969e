// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/ttl_source.h"

#include <algorithm>

namespace stalwick {

namespace {

struct LinePlan {
    std::uint8_t bit;
    std::uint32_t firstMs;
    std::array<std::uint32_t, 2> highMs;  // shortest, longest
    std::array<std::uint32_t, 2> lowMs;
};

constexpr LinePlan kLinePlans[] = {
    {0, 20, {8, 8}, {32, 32}},            // camera, 25 frames a second
    {1, 250, {800, 1200}, {1000, 3000}},  // trial
    {2, 500, {500, 500}, {500, 500}},     // clock of one second
    {3, 900, {60, 60}, {1800, 4200}},     // reward valve
    {5, 300, {20, 40}, {60, 400}},        // lick contact
    {7, 120, {2, 5}, {200, 1500}},        // stimulus
};

}  // namespace

TtlSource::TtlSource(std::uint64_t seed, std::uint32_t samplingFrequency)
    : random_(MakeRandom(seed, RandomStream::kTtl)), samplingFrequency_(samplingFrequency) {
    for (const LinePlan& plan : kLinePlans) {
        lines_.push_back({plan.bit, SamplesOf(plan.firstMs), plan.highMs, plan.lowMs});
    }
}

std::uint64_t TtlSource::SamplesOf(std::uint32_t milliseconds) const {
    return std::max<std::uint64_t>(std::uint64_t{milliseconds} * samplingFrequency_ / 1000, 1);
}

void TtlSource::AdvanceTo(std::uint64_t sample) {
    nextEdge_ = UINT64_MAX;
    for (Line& line : lines_) {
        while (line.nextEdge <= sample) {
            value_ = static_cast<std::uint8_t>(value_ ^ (1u << line.bit));
            const bool isHigh = (unsigned{value_} >> line.bit & 1u) != 0;
            const auto& range = isHigh ? line.highMs : line.lowMs;
            line.nextEdge += SamplesOf(random_.Between(range[0], range[1]));
        }
        nextEdge_ = std::min(nextEdge_, line.nextEdge);
    }
}

void TtlSource::Next(std::span<std::uint8_t> values) {
    for (std::uint8_t& value : values) {
        if (sample_ >= nextEdge_) AdvanceTo(sample_);
        value = value_;
        ++sample_;
    }
}

}  // namespace stalwick
