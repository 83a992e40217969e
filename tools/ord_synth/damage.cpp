// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/damage.h"

#include <algorithm>

namespace stalwick {

std::string OrderDamage(std::vector<SynthDamage>& damage) {
    std::stable_sort(damage.begin(), damage.end(), [](const SynthDamage& a, const SynthDamage& b) {
        return a.position < b.position;
    });
    for (std::size_t i = 1; i < damage.size(); ++i) {
        const SynthDamage& before = damage[i - 1];
        const std::uint64_t touched =
            before.kind == SynthDamage::Kind::kDropBytes ? before.count : 1;
        const bool cut = before.kind == SynthDamage::Kind::kCut;
        if (cut || damage[i].position < before.position + touched) {
            return "the damage at byte " + std::to_string(damage[i].position) +
                   " is inside of that at byte " + std::to_string(before.position);
        }
    }
    return {};
}

DamagingSink::DamagingSink(const ByteSink& sink, const std::vector<SynthDamage>& damage,
                           std::uint64_t seed)
    : sink_(sink), damage_(damage), random_(MakeRandom(seed, RandomStream::kDamage)) {}

bool DamagingSink::Take(std::span<const std::uint8_t> bytes) {
    out_.clear();
    while (!bytes.empty()) bytes = bytes.subspan(TakeDamaged(bytes));
    return out_.empty() || sink_(out_);
}

// Takes bytes up to the next damaged place, or the damage there. Returns how many.
std::size_t DamagingSink::TakeDamaged(std::span<const std::uint8_t> bytes) {
    if (toDrop_ == 0 && next_ < damage_.size() && damage_[next_].position == position_) {
        const SynthDamage& damage = damage_[next_++];
        switch (damage.kind) {
            case SynthDamage::Kind::kFlip:
                out_.push_back(static_cast<std::uint8_t>(bytes.front() ^ (1U << damage.count)));
                ++position_;
                return 1;
            case SynthDamage::Kind::kInsert:
                for (std::uint64_t i = 0; i < damage.count; ++i) {
                    out_.push_back(static_cast<std::uint8_t>(random_.Next()));
                }
                return 0;
            case SynthDamage::Kind::kDropBytes:
                toDrop_ = damage.count;
                break;
            case SynthDamage::Kind::kCut:
                cut_ = true;
                break;
        }
    }
    std::uint64_t count = bytes.size();
    const bool drops = toDrop_ != 0;
    if (drops) {
        count = std::min(count, toDrop_);
        toDrop_ -= count;
    } else if (next_ < damage_.size()) {
        count = std::min(count, damage_[next_].position - position_);
    }
    if (!drops && !cut_) {
        out_.insert(out_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    }
    position_ += count;
    return static_cast<std::size_t>(count);
}

}  // namespace stalwick
