// SPDX-License-Identifier: BSD-3-Clause
#include "engine/packet_source.h"

#include <utility>

#include "engine/span_source.h"
#include "engine/stream_source.h"

namespace stalwick {

std::unique_ptr<PacketSource> MakePacketSource(OnDamage onDamage) {
    if (onDamage == OnDamage::kSkip) return std::make_unique<StreamSource>();
    return std::make_unique<SpanSource>();
}

}  // namespace stalwick
