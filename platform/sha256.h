// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace stalwick {

using Sha256Digest = std::array<std::uint8_t, 32>;

// The SHA-256 of bytes that arrive piece by piece, computed by the system's library. Throws
// std::runtime_error if that refuses.
class Sha256 {
  public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void Add(const void* data, std::size_t size);
    // Call it once, last.
    [[nodiscard]] Sha256Digest Finish();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace stalwick
