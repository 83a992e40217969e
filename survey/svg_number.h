#pragma once

#include <string>

namespace stalwick {

// A length or a place in a picture with at most two decimals, as short as it can be: "1.5", "-.25",
// "3", never "-0". What is no number is 0; a picture has no place for it.
[[nodiscard]] std::string SvgNumber(double value);

// Text as the content of an XML element or of an attribute in double quotes. UTF-8; a character
// that XML cannot have becomes U+FFFD.
[[nodiscard]] std::string EscapeXml(const std::string& text);

}  // namespace stalwick
