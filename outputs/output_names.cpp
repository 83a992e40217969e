// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/output_names.h"

#include "outputs/file_identity.h"

namespace stalwick {

std::wstring NumberSuffix(std::int32_t number) {
    return L'_' + PadWithZeros(number, 2);
}

}  // namespace stalwick
