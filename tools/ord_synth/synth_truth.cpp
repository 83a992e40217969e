// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/synth_truth.h"

#include <nlohmann/json.hpp>

namespace stalwick {

namespace {

using Json = nlohmann::ordered_json;

const char* NameOf(SynthDamage::Kind kind) {
    switch (kind) {
        case SynthDamage::Kind::kFlip:
            return "flip";
        case SynthDamage::Kind::kCut:
            return "cut";
        case SynthDamage::Kind::kInsert:
            return "insert";
        case SynthDamage::Kind::kDropBytes:
            break;
    }
    return "drop-bytes";
}

Json GapsOf(const SynthOptions& options) {
    Json gaps = Json::array();
    for (const SynthGap& gap : options.gaps) {
        const std::uint64_t firstSample = gap.firstLostPacket * kSynthSamplesPerPacket;
        gaps.push_back(
            {{"first_lost_packet", gap.firstLostPacket},
             {"at_seconds", static_cast<double>(firstSample) / options.samplingFrequency},
             {"missing_samples", gap.lostPackets * kSynthSamplesPerPacket}});
    }
    return gaps;
}

Json DamageOf(const SynthOptions& options) {
    Json all = Json::array();
    for (const SynthDamage& damage : options.damage) {
        Json one = {{"kind", NameOf(damage.kind)}, {"position", damage.position}};
        if (damage.kind == SynthDamage::Kind::kFlip) {
            one["bit"] = damage.count;
        } else if (damage.kind != SynthDamage::Kind::kCut) {
            one["bytes"] = damage.count;
        }
        all.push_back(one);
    }
    return all;
}

}  // namespace

std::string DescribeTruth(const SynthOptions& options, const SynthSummary& summary) {
    const Json truth = {
        {"channels", options.channelCount}, {"sampling_frequency", options.samplingFrequency},
        {"packets", summary.packets},       {"undamaged_bytes", summary.bytes},
        {"drift_ppm", options.driftPpm},    {"repeated_timestamps", options.repeatedStamps},
        {"gaps", GapsOf(options)},          {"damage", DamageOf(options)},
        {"flat", options.flatChannels},     {"clipped", options.clippedChannels},
        {"noisy", options.noisyChannels}};
    return truth.dump(2) + "\n";
}

}  // namespace stalwick
