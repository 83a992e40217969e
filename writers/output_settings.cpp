// SPDX-License-Identifier: BSD-3-Clause
#include "writers/output_settings.h"

#include "platform/processor_count.h"

namespace stalwick {

bool UsesHelperThreads(const OutputSettings& settings) {
    if (settings.helperThreads != HelperThreads::kWhenThereAreCores) {
        return settings.helperThreads == HelperThreads::kOn;
    }
    return UsableProcessors() > 1;
}

}  // namespace stalwick
