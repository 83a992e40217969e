// SPDX-License-Identifier: BSD-3-Clause
#include "engine/out_of_memory.h"

#include "platform/text_encoding.h"

namespace stalwick {

ConversionDetail OutOfMemoryDetail(const std::wstring& recording) {
    return {ConversionDetail::Kind::kIncomplete,
            OneLine(recording) + L": not completely converted: not enough memory; " +
                kOutputsMayLackTheirEnd,
            ConversionDetail::Cause::kOutOfMemory};
}

}  // namespace stalwick
