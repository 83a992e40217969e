// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "survey/page_survey.h"

namespace stalwick {

// A page cannot draw every channel: it draws some of the named ones, and others from the quietest
// to the noisiest. All lists are in the order of the channels.

// Channels, from 0, at most `most`.
[[nodiscard]] std::vector<std::uint32_t> ShownChannels(const PageSurvey& page, std::size_t most);

// Positions in `page.spectra.channels`, at most six.
[[nodiscard]] std::vector<std::size_t> ShownSpectra(const PageSurvey& page);

// Whether the channel is flat, clipped or noisy.
[[nodiscard]] bool IsNamed(const PageSurvey& page, std::uint32_t channel);

}  // namespace stalwick
