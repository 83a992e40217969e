// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cstddef>
#include <regex>

#include "tests/support/reference_converter.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kHeaderBytes = 16384;

}  // namespace

std::string MaskHeaderText(std::string_view headerBlock, std::string_view outputDirectory) {
    static const std::regex uuidLine(
        "-FileUUID [0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    static const std::regex timeLine(
        "(-TimeCreated|-TimeClosed) \\d{4}/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d");
    const std::string text(headerBlock.substr(0, headerBlock.find_last_not_of('\0') + 1));
    std::string masked;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find("\r\n", start), text.size());
        std::string line = text.substr(start, end - start);
        if (std::regex_match(line, uuidLine)) line = "-FileUUID U";
        if (std::regex_match(line, timeLine)) line = line.substr(0, line.find(' ')) + " T";
        std::size_t at = outputDirectory.empty() ? std::string::npos : line.find(outputDirectory);
        if (at != std::string::npos) line.replace(at, outputDirectory.size(), "ROOT");
        masked += line;
        if (end < text.size()) masked += "\r\n";
        start = end + 2;
    }
    return masked;
}

std::string MaskOutputFile(std::string_view fileBytes, std::string_view outputDirectory) {
    std::string masked = MaskHeaderText(fileBytes.substr(0, kHeaderBytes), outputDirectory);
    if (masked.size() < kHeaderBytes) masked.resize(kHeaderBytes, '\0');
    if (fileBytes.size() > kHeaderBytes) masked += fileBytes.substr(kHeaderBytes);
    return masked;
}

}  // namespace stalwick::test
