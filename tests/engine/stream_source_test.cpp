// SPDX-License-Identifier: BSD-3-Clause
#include "engine/stream_source.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/damaged_recording.h"
#include "tests/support/engine_run.h"

namespace stalwick::test {
namespace {

struct Stretch {
    std::uint64_t position = 0;
    std::uint64_t size = 0;
    bool operator==(const Stretch&) const = default;
};

std::vector<Stretch> StretchesOf(const std::wstring& path) {
    StreamSource source;
    EXPECT_EQ(source.Open(path), 0);
    std::vector<Stretch> stretches;
    DecodedSpan span;
    do {
        source.Read(span);
        for (const SkippedStretch& skipped : span.skipped) {
            stretches.push_back({skipped.part.position, skipped.part.size});
        }
    } while (!span.IsLast());
    return stretches;
}

// The damage of the stream, without a border between parts that touch.
std::vector<Stretch> DamageOf(const std::wstring& path) {
    PacketStream stream;
    stream.BeStrict();
    EXPECT_EQ(stream.Open(path), 0);
    std::vector<Stretch> stretches;
    ORDDataPacket packet;
    StreamPart part;
    do {
        part = stream.Next(packet);
        if (part.kind != StreamPart::Kind::kDamage) continue;
        if (!stretches.empty() &&
            stretches.back().position + stretches.back().size == part.position) {
            stretches.back().size += part.size;
        } else {
            stretches.push_back({part.position, part.size});
        }
    } while (part.kind != StreamPart::Kind::kEnd);
    return stretches;
}

TEST(StreamSource, StretchesAreTheDamageOfTheStream) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        std::mt19937_64 random(seed);
        WholeRecordingShape shape;
        shape.packetCount = 1000;
        shape.timestamps = seed % 2 == 0;
        if (seed % 4 < 2) shape.width = 5;
        DamagedRecording recording(MakeWholeRecording(seed, shape));
        for (int place = 0; place < 40; ++place) DamageOnePlace(recording, random);
        const TempDirectory directory;
        const std::wstring path = PutRecording(directory, recording.bytes);
        EXPECT_EQ(StretchesOf(path), DamageOf(path)) << seed;
    }
}

}  // namespace
}  // namespace stalwick::test
