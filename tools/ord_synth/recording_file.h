#pragma once

#include <string>

#include "tools/ord_synth/recording_synth.h"
#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// Makes the recording at path. It is written under the name path + ".part" and renamed when it is
// whole; when something fails, that file is removed and path is as it was. Result: empty, or one
// line that says what failed, where and why.
std::string WriteRecordingFile(const SynthOptions& options, const std::string& path,
                               bool replaceExisting, SynthSummary& summary);

}  // namespace stalwick
