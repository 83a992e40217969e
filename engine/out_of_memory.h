// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "engine/conversion_detail.h"

namespace stalwick {

// For programs that continue after a lack of memory (std::bad_alloc) has ended a job.

// The status of that job. Narrow: printing it takes no memory.
inline constexpr char kStatusOutOfMemory[] = "Processing failed - Not enough memory";

// Reports what may be missing from the outputs of the recording that was being converted.
[[nodiscard]] ConversionDetail OutOfMemoryDetail(const std::wstring& recording);

}  // namespace stalwick
