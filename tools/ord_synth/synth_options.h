// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace stalwick {

inline constexpr std::uint32_t kSynthSamplesPerPacket = 10;

// Packets that the recorder lost: they are missing in the stream, but the clock continues.
struct SynthGap {
    std::uint64_t firstLostPacket = 0;
    std::uint64_t lostPackets = 0;
};

// A place where the finished recording is damaged, identified by its byte in the undamaged one.
struct SynthDamage {
    enum class Kind { kFlip, kCut, kInsert, kDropBytes };
    Kind kind = Kind::kFlip;
    std::uint64_t position = 0;
    std::uint64_t count = 0;  // bytes inserted or dropped; for a flip the bit, 0 to 7
};

// The contents of a synthetic recording. The same options yield the same bytes on every platform.
struct SynthOptions {
    std::uint32_t channelCount = 64;  // 32, 64, 128 or 256
    std::uint32_t samplingFrequency = 30000;
    std::uint64_t packetCount = 3000;  // of ten samples per channel, including lost packets
    bool hardwareTimestamps = true;    // version 2.0; without them 1.0
    bool perSampleStates = false;
    bool ttl = true;
    bool baseImu = false;
    bool afeImu = false;
    bool ultrasonic = false;
    std::vector<std::uint32_t>
        enabledChannels;  // ascending; empty: all, and no mask in the packets
    std::vector<SynthGap> gaps;
    std::int32_t driftPpm = 0;  // of the real sampling rate relative to the header's; within 100000
    // The headstage had been on for a while: a time of 0 would mean "no time" to a reader.
    std::uint64_t firstTimestampNs = 754'321'098'765;
    std::vector<std::uint64_t> repeatedStamps;  // packets that repeat the previous timestamp
    std::vector<SynthDamage> damage;            // as OrderDamage returns it
    std::uint32_t noiseSteps = 10;  // RMS of the noise in steps of the 14-bit converter, 0 to 1000
    // Channels with a fault, ascending: one value all the time; the signal at the upper end of the
    // range; strong additional noise.
    std::vector<std::uint32_t> flatChannels;
    std::vector<std::uint32_t> clippedChannels;
    std::vector<std::uint32_t> noisyChannels;
    std::uint64_t seed = 1;
    std::int64_t utcOffsetMicroseconds = 1'700'000'000'000'000;
};

// Number of state bytes in a packet. The 256-channel code implies five, though its packets carry
// ten samples per channel like all others.
std::uint32_t StateBytesPerPacket(const SynthOptions& options);

// The number of whole packets nearest to a time, at least one.
std::uint64_t PacketsInMicroseconds(std::uint64_t microseconds, std::uint32_t samplingFrequency);

// "2.5" to 2500000. False if the text is not a plain decimal number with at most ten digits before
// the point and six after it.
bool ParseSecondsToMicroseconds(const std::string& text, std::uint64_t& microseconds);

// "20000:512" to a position and a count. False if the text is not such a pair.
bool ParseDamagePlace(const std::string& text, SynthDamage& damage);

// "0-15,20" to the ascending list of channels. False if the text is not such a list, or a channel
// is not below channelCount.
bool ParseChannelList(const std::string& text, std::uint32_t channelCount,
                      std::vector<std::uint32_t>& channels);

}  // namespace stalwick
