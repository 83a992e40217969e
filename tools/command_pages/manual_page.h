// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "command_pages/command_text.h"

namespace stalwick {

struct ManualPage {
    CommandText command;
    std::string date;     // of the release, as 2026-11-21
    std::string version;  // "1.2.0.1941"
    std::string prose;    // further sections, in the language of man(7)
};

// The page for section 1, in the language of man(7).
std::string FormatManualPage(const ManualPage& page);

}  // namespace stalwick
