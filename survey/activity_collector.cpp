// SPDX-License-Identifier: BSD-3-Clause
#include "survey/activity_collector.h"

namespace stalwick {

namespace {

void AddImu(const std::optional<ImuValues>& values, ImuBin& bin) {
    if (!values) return;
    ++bin.packets;
    for (std::size_t i = 0; i < kImuValues; ++i) {
        bin.sums[i] += static_cast<std::int16_t>((*values)[i]);
    }
}

void AddUltrasonic(const std::optional<UltrasonicValues>& values, ActivityBin& bin) {
    if (!values) return;
    bin.ultrasonicSamples += kUltrasonicValues;
    for (const std::uint16_t value : *values) {
        const std::int32_t sample = static_cast<std::int16_t>(value);
        bin.ultrasonicSquares += static_cast<std::uint64_t>(std::int64_t{sample} * sample);
    }
}

}  // namespace

void ImuBin::Add(const ImuBin& other) {
    packets += other.packets;
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += other.sums[i];
}

void ActivityBin::Add(const ActivityBin& other) {
    packets += other.packets;
    for (std::size_t line = 0; line < kTtlLines; ++line) {
        ttlChangedPackets[line] += other.ttlChangedPackets[line];
    }
    baseImu.Add(other.baseImu);
    afeImu.Add(other.afeImu);
    ultrasonicSamples += other.ultrasonicSamples;
    ultrasonicSquares += other.ultrasonicSquares;
}

void ActivityCollector::Take(const WatchedPacket& watched) {
    ActivityBin& bin = activity_.At(watched.seconds);
    ++bin.packets;
    for (std::size_t line = 0; line < kTtlLines; ++line) {
        bin.ttlChangedPackets[line] += unsigned{watched.ttlChanged} >> line & 1U;
    }
    AddImu(watched.packet.baseIMU, bin.baseImu);
    AddImu(watched.packet.afeIMU, bin.afeImu);
    AddUltrasonic(watched.packet.ultrasonic, bin);
    events_.At(watched.seconds).events += watched.ttlEvents;
}

}  // namespace stalwick
