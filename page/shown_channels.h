#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "survey/page_survey.h"

namespace stalwick {

// A page cannot draw every channel: some of those that are named, and others from the quietest to
// the noisiest. All ascend by channel.

// Channels, from 0, at most `most`.
[[nodiscard]] std::vector<std::uint32_t> ShownChannels(const PageSurvey& page, std::size_t most);

// Places in `page.spectra.channels`, at most six.
[[nodiscard]] std::vector<std::size_t> ShownSpectra(const PageSurvey& page);

// Whether the channel is flat, clipped or noisy.
[[nodiscard]] bool IsNamed(const PageSurvey& page, std::uint32_t channel);

}  // namespace stalwick
