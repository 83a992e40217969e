// SPDX-License-Identifier: BSD-3-Clause

// The packet decoder on a span of bytes, with each of its kernels, compared with the bit-at-a-time
// decoder.

#include <memory>
#include <optional>
#include <random>
#include <span>

#include "fuzz/fuzz_target.h"
#include "ord/ad_block_kernel.h"
#include "ord/packet_decoder.h"
#include "tests/support/ord_builder.h"
#include "tests/support/plain_packet.h"

namespace stalwick::fuzz {

namespace {

struct Plan {
    std::int32_t version = 10;
    std::optional<std::uint32_t> samplesOverride;
};

Plan PlanOf(std::uint8_t byte) {
    Plan plan;
    if ((byte & 1U) != 0) plan.version = 20;
    if ((byte & 2U) == 0) plan.samplesOverride = 10;
    return plan;
}

void Decode(std::span<const std::uint8_t> bytes, const Plan& plan,
            const test::ReferenceSpan& expected) {
    static std::vector<ORDDataPacket> packets;  // reused, as the conversion does
    const std::uint8_t* const next = ProcessDataBuffer(
        bytes.data(), bytes.size(), packets, PacketFormat{0, plan.version}, plan.samplesOverride);
    Require(next == bytes.data() + expected.consumedBytes, "other bytes were consumed");
    Require(packets.size() == expected.packets.size(), "another number of packets");
    for (std::size_t i = 0; i < packets.size(); ++i) {
        Require(test::ToReference(packets[i]) == expected.packets[i], "another packet");
    }
}

}  // namespace

std::vector<std::string> MakeSeeds() {
    std::vector<std::string> seeds;
    std::mt19937_64 random(1);
    for (unsigned i = 0; i < 64; ++i) {
        const bool timestamps = i % 2 != 0;
        const auto code = static_cast<std::uint8_t>(i / 2 % 4);
        std::optional<std::uint64_t> timestamp;
        if (timestamps) timestamp = random();
        std::string seed(1, timestamps ? '\1' : '\0');
        for (unsigned packet = 0; packet <= i % 3; ++packet) {
            test::RandomPacketShape shape = test::MakeRandomShape(random, code, timestamp);
            shape.writeZeroWidthBits = i % 8 < 4;
            seed += test::EncodePacket(test::MakeRandomPacket(random, shape));
        }
        seeds.push_back(seed);
    }
    return seeds;
}

}  // namespace stalwick::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stalwick;
    fuzz::Input input(data, size);
    const fuzz::Plan plan = fuzz::PlanOf(input.TakeByte());
    const std::string_view span = input.Take(kDataBufferSize);
    // Memory of exactly this size: a sanitizer sees every read beyond it.
    const auto bytes = std::make_unique<std::uint8_t[]>(span.size());
    std::copy(span.begin(), span.end(), bytes.get());

    const test::ReferenceSpan expected = test::ReferenceProcessDataBuffer(
        span, test::ReferenceDecodeOptions{0, plan.version}, plan.samplesOverride);
    for (const ADBlockKernel& kernel : AvailableADBlockKernels()) {
        SetADBlockKernel(&kernel);
        fuzz::Decode({bytes.get(), span.size()}, plan, expected);
    }
    SetADBlockKernel(nullptr);
    return 0;
}
