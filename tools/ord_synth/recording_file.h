// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "tools/ord_synth/recording_synth.h"
#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// Makes the recording at path. It is written under the name path + ".part" and renamed when it is
// complete; if something fails, that file is removed and path is unchanged. Returns an empty text,
// or one line with what failed, where and why.
std::string WriteRecordingFile(const SynthOptions& options, const std::string& path,
                               bool replaceExisting, SynthSummary& summary);

}  // namespace stalwick
