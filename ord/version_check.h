// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

#include "ord/decode_options.h"

namespace stalwick {

// Whether the packets at the beginning of a stream contradict the header's version: if the header
// says that they have no timestamps, more of them (at least two) follow one another when decoded
// with timestamps, or the other way round. With a contradicted version, decoding does not return
// what was recorded.
[[nodiscard]] bool PacketsContradictVersion(const std::uint8_t* data, std::size_t length,
                                            const DecodeOptions& options);

}  // namespace stalwick
