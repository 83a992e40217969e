// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

#include "platform/local_time.h"
#include "platform/random_seed.h"

namespace stalwick::test {

// How a header prints the time and the seed that FixedIdentity installs. 5489 is the generator's
// own default seed; its first two numbers are published, 0xC96D191CF6F6AEA6 and 0x401F7AC78BC80F1C.
inline constexpr char kFixedTimeText[] = "2021/03/04 09:05:07";
inline constexpr char kFixedUuidText[] = "a6aef6f6-1c19-4dc9-9c0f-c88bc77a1f40";

/** During its lifetime every file gets one time and one UUID, so that whole outputs can be
 * compared. */
class FixedIdentity {
  public:
    FixedIdentity()
        : clockBefore_(SetLocalTimeSource([] { return LocalTime{2021, 3, 4, 9, 5, 7}; })),
          seedBefore_(SetRandomSeedSource([] { return std::uint32_t{5489}; })) {}
    ~FixedIdentity() {
        SetLocalTimeSource(clockBefore_);
        SetRandomSeedSource(seedBefore_);
    }
    FixedIdentity(const FixedIdentity&) = delete;
    FixedIdentity& operator=(const FixedIdentity&) = delete;

  private:
    LocalTimeSource clockBefore_;
    RandomSeedSource seedBefore_;
};

}  // namespace stalwick::test
