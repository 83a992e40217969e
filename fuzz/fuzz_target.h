// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Each target passes arbitrary bytes to one part of the program and compares the result with the
// tests' plain reference. A difference, like a crash, ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace stalwick::fuzz {

/** The target's own seeds, generated each time: the repository does not contain them. */
std::vector<std::string> MakeSeeds();

/** Ends the process with a message unless `holds`. */
void Require(bool holds, std::string_view what);

/** Takes bytes from the front of an input; after its end everything is 0 or empty. */
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size)
        : left_(reinterpret_cast<const char*>(data), size) {}

    std::uint8_t TakeByte() { return left_.empty() ? std::uint8_t{0} : Front(); }
    std::string_view Take(std::size_t size) {
        const std::string_view taken = left_.substr(0, size);
        left_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view TakeAll() { return Take(left_.size()); }

  private:
    std::uint8_t Front() { return static_cast<std::uint8_t>(Take(1).front()); }

    std::string_view left_;
};

}  // namespace stalwick::fuzz
