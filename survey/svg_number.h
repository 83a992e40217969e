// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace stalwick {

// A length or a position in a picture with at most two decimals, as short as possible: "1.5",
// "-.25", "3", never "-0". NaN and infinity become 0; a picture has no place for them.
[[nodiscard]] std::string SvgNumber(double value);

// Text as the content of an XML element or of an attribute in double quotes. UTF-8; a character
// that XML does not allow becomes U+FFFD.
[[nodiscard]] std::string EscapeXml(const std::string& text);

}  // namespace stalwick
