// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/ord_synth/integer_random.h"
#include "tools/ord_synth/recording_synth.h"
#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// Sorts the places by position. Returns an empty text, or which two of them overlap.
[[nodiscard]] std::string OrderDamage(std::vector<SynthDamage>& damage);

// Passes on the bytes of a recording, damaged.
class DamagingSink {
  public:
    // `damage` as OrderDamage returns it.
    DamagingSink(const ByteSink& sink, const std::vector<SynthDamage>& damage, std::uint64_t seed);

    // Takes the recording's next bytes; returns false if the sink refused.
    bool Take(std::span<const std::uint8_t> bytes);
    // Whether the recording was long enough for every place.
    bool MetAll() const { return next_ == damage_.size(); }

  private:
    std::size_t TakeDamaged(std::span<const std::uint8_t> bytes);

    const ByteSink& sink_;
    const std::vector<SynthDamage>& damage_;
    IntegerRandom random_;
    std::size_t next_ = 0;        // of damage_
    std::uint64_t position_ = 0;  // in the undamaged recording
    std::uint64_t toDrop_ = 0;
    bool cut_ = false;
    std::vector<std::uint8_t> out_;
};

}  // namespace stalwick
