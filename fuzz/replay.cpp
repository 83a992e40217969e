// SPDX-License-Identifier: BSD-3-Clause

// Runs a target without libFuzzer: on its seeds, on slightly damaged seeds, and on the files in the
// directories given on the command line (what fuzzing found earlier).

#include <cstdio>
#include <filesystem>
#include <random>

#include "fuzz/fuzz_target.h"
#include "tests/support/temp_directory.h"

namespace {

constexpr int kDamagedPerSeed = 12;

void Run(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

// Changes one to four bytes, or cuts off the end.
std::string Damage(std::string input, std::mt19937_64& random) {
    if (input.empty()) return input;
    if (random() % 4 == 0) return input.substr(0, random() % input.size());
    for (std::uint64_t left = 1 + random() % 4; left > 0; --left) {
        input[random() % input.size()] = static_cast<char>(random());
    }
    return input;
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t runs = 0;
    std::mt19937_64 random(1);
    for (const std::string& seed : stalwick::fuzz::MakeSeeds()) {
        Run(seed);
        for (int i = 0; i < kDamagedPerSeed; ++i) Run(Damage(seed, random));
        runs += 1 + kDamagedPerSeed;
    }
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) continue;
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            Run(stalwick::test::ReadFile(entry.path().wstring()));
            ++runs;
        }
    }
    std::printf("%zu inputs\n", runs);
    return runs != 0 ? 0 : 1;
}
