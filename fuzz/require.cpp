// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <cstdlib>

#include "fuzz/fuzz_target.h"

namespace stalwick::fuzz {

void Require(bool holds, std::string_view what) {
    if (holds) return;
    std::fprintf(stderr, "fuzz target: %.*s\n", static_cast<int>(what.size()), what.data());
    std::abort();
}

}  // namespace stalwick::fuzz
