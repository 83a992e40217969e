// SPDX-License-Identifier: BSD-3-Clause

// Writes the target's seeds into a directory: make_seeds_<target> DIRECTORY

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "fuzz/fuzz_target.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return 2;
    }
    const std::filesystem::path directory = argv[1];
    std::filesystem::create_directories(directory);
    int number = 0;
    for (const std::string& seed : stalwick::fuzz::MakeSeeds()) {
        std::ofstream file(directory / ("seed" + std::to_string(number++)), std::ios::binary);
        if (!file.write(seed.data(), static_cast<std::streamsize>(seed.size()))) return 1;
    }
    return 0;
}
