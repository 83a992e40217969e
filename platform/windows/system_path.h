// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace stalwick {

// The path in the form in which the system's calls accept any length.
std::wstring SystemPath(const std::wstring& path);

}  // namespace stalwick
