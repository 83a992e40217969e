// SPDX-License-Identifier: BSD-3-Clause

// Times DecodeADBlock with every kernel of this machine, and the bit-by-bit reference. Each block's
// result is first compared with the reference: a wrong one ends the program.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "ord/ad_block_decoder.h"
#include "ord/ad_block_kernel.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_decoder.h"

namespace stalwick {

namespace {

// Of this program, so that other programs on the machine matter less.
double CpuNanoseconds() {
    return static_cast<double>(std::clock()) * (1e9 / CLOCKS_PER_SEC);
}

constexpr unsigned kBlocks = 64;  // different ones in turn, so that no branch is predictable

struct WidthClass {
    const char* name;
    unsigned narrowest;
    unsigned widest;
};
constexpr WidthClass kWidthClasses[] = {
    {"recorded", 5, 8}, {"narrow", 0, 3}, {"wide", 12, 15}, {"mixed", 0, 15}};

struct MaskClass {
    const char* name;
    unsigned everyNth;  // channel is enabled; 0: no mask at all
};
constexpr MaskClass kMaskClasses[] = {{"all", 0}, {"half", 2}, {"eighth", 8}};

struct Workload {
    unsigned channels = 0;
    std::vector<std::uint8_t> mask;
    std::string span;                  // the blocks one after another
    std::vector<std::size_t> offsets;  // of each block in the span

    std::size_t SampleCount() const { return std::size_t{channels} * kSamplesPerPacket * kBlocks; }
    const std::uint8_t* At(std::size_t i) const {
        return reinterpret_cast<const std::uint8_t*>(span.data()) + offsets[i];
    }
};

std::int32_t RandomDelta(unsigned width, std::mt19937_64& random) {
    if (width == 0) return 0;
    const std::int32_t range = 1 << (width - 1);
    return static_cast<std::int32_t>(random() % 0x8000U) % (2 * range) - range;
}

Workload MakeWorkload(unsigned channels, const WidthClass& widths, const MaskClass& mask) {
    std::mt19937_64 random(channels);
    Workload work{channels, {}, {}, {}};
    std::optional<std::vector<std::uint8_t>> packetMask;
    if (mask.everyNth != 0) {
        std::vector<unsigned> enabled;
        for (unsigned i = 0; i < channels; i += mask.everyNth) enabled.push_back(i);
        packetMask = test::MakeChannelMask(channels, enabled);
        work.mask = *packetMask;
    }
    for (unsigned i = 0; i < kBlocks; ++i) {
        test::AdBlockPlan plan;
        for (unsigned channel = 0; channel < channels; ++channel) {
            const auto width = static_cast<unsigned>(
                widths.narrowest + random() % (widths.widest - widths.narrowest + 1));
            plan.widths.push_back(static_cast<std::uint8_t>(width));
            plan.initialValues.push_back(random() & 0x3FFFU);
            for (unsigned s = 1; s < kSamplesPerPacket; ++s) {
                plan.deltas.push_back(RandomDelta(width, random));
            }
        }
        work.offsets.push_back(work.span.size());
        work.span += test::EncodeAdBlock(plan, channels, packetMask);
    }
    return work;
}

void CompareWithReference(const Workload& work, const std::string& name) {
    std::vector<std::uint16_t> samples;
    for (std::size_t i = 0; i < kBlocks; ++i) {
        const std::string_view rest = std::string_view(work.span).substr(work.offsets[i]);
        const auto expected =
            test::ReferenceDecodeADBlock(rest, work.channels, kSamplesPerPacket, work.mask);
        const std::uint8_t* end = DecodeADBlock(work.At(i), rest.size(), work.channels,
                                                kSamplesPerPacket, work.mask, samples);
        if (samples != expected.samples || end != work.At(i) + expected.consumedBytes) {
            std::fprintf(stderr, "%s: block %zu decodes wrongly; nothing is timed\n", name.c_str(),
                         i);
            std::exit(1);
        }
    }
}

// Core cycles per nanosecond at this moment, from a chain of additions of one cycle each.
double CyclesPerNanosecond() {
    constexpr std::uint64_t kSteps = 2'000'000;
    constexpr unsigned kAdditionsAStep = 8;
    std::uint64_t value = 1;
    const double start = CpuNanoseconds();
    for (std::uint64_t i = 0; i < kSteps; ++i) {
        for (unsigned k = 0; k < kAdditionsAStep; ++k) {
            value += i;
            benchmark::DoNotOptimize(value);
        }
    }
    const double elapsed = CpuNanoseconds() - start;
    return static_cast<double>(kSteps * kAdditionsAStep) / elapsed;
}

template <typename Body>
void TimeBlocks(benchmark::State& state, const Workload& work, Body&& body) {
    const double start = CpuNanoseconds();
    for (auto _ : state) {
        for (std::size_t i = 0; i < kBlocks; ++i) body(i);
    }
    const double elapsed = CpuNanoseconds() - start;
    const double samples =
        static_cast<double>(state.iterations()) * static_cast<double>(work.SampleCount());
    const double nanoseconds = elapsed / samples;
    state.counters["ns/sample"] = nanoseconds;
    state.counters["cycles/sample"] = nanoseconds * CyclesPerNanosecond();
}

void TimeKernel(benchmark::State& state, const ADBlockKernel& kernel, const Workload& work) {
    SetADBlockKernel(&kernel);
    std::vector<std::uint16_t> samples;
    TimeBlocks(state, work, [&](std::size_t i) {
        DecodeADBlock(work.At(i), work.span.size() - work.offsets[i], work.channels,
                      kSamplesPerPacket, work.mask, samples);
        benchmark::DoNotOptimize(samples.data());
    });
    SetADBlockKernel(nullptr);
}

void TimeReference(benchmark::State& state, const Workload& work) {
    TimeBlocks(state, work, [&](std::size_t i) {
        const auto block =
            test::ReferenceDecodeADBlock(std::string_view(work.span).substr(work.offsets[i]),
                                         work.channels, kSamplesPerPacket, work.mask);
        benchmark::DoNotOptimize(block.samples.data());
    });
}

void Register(unsigned channels, const WidthClass& widths, const MaskClass& mask) {
    const std::string shape = std::to_string(channels) + "/" + mask.name + "/" + widths.name;
    const Workload work = MakeWorkload(channels, widths, mask);
    for (const ADBlockKernel& kernel : AvailableADBlockKernels()) {
        SetADBlockKernel(&kernel);
        CompareWithReference(work, kernel.name + "/" + shape);
        SetADBlockKernel(nullptr);
        benchmark::RegisterBenchmark(
            (kernel.name + "/" + shape).c_str(),
            [&kernel, work](benchmark::State& state) { TimeKernel(state, kernel, work); });
    }
    benchmark::RegisterBenchmark(("reference/" + shape).c_str(),
                                 [work](benchmark::State& state) { TimeReference(state, work); });
}

}  // namespace

}  // namespace stalwick

int main(int argc, char** argv) {
    for (const unsigned channels : {32U, 64U, 128U, 256U}) {
        for (const auto& mask : stalwick::kMaskClasses) {
            for (const auto& widths : stalwick::kWidthClasses) {
                stalwick::Register(channels, widths, mask);
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
