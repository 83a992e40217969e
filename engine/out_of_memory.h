#pragma once

#include <string>

#include "engine/conversion_detail.h"

namespace stalwick {

// For programs that go on where a lack of memory (std::bad_alloc) has ended a job.

// The status of that job. Narrow: printing it takes no memory.
inline constexpr char kStatusOutOfMemory[] = "Processing failed - Not enough memory";

// Says of the recording that was being converted what may be missing.
[[nodiscard]] ConversionDetail OutOfMemoryDetail(const std::wstring& recording);

}  // namespace stalwick
