#pragma once

#include <cstddef>
#include <cstdint>

#include "ord/decode_options.h"

namespace stalwick {

// Whether the packets at the beginning of a stream contradict the header's version: decoded with
// timestamps where it says without, or the other way round, more of them follow one another than
// as it says, two at least. What a contradicted version decodes is not what was recorded.
[[nodiscard]] bool PacketsContradictVersion(const std::uint8_t* data, std::size_t length,
                                            const DecodeOptions& options);

}  // namespace stalwick
