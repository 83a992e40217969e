// SPDX-License-Identifier: BSD-3-Clause
#include "tests/trust/expected_outputs.h"

namespace stalwick::test {

namespace {

constexpr std::size_t kHeaderBytes = 16384;
constexpr std::string_view kTimeClosed = "-TimeClosed ";
constexpr std::string_view kNotClosed = "File was not closed properly";

std::string ProvisionalHeader(const std::string& finalHeader) {
    std::string header = finalHeader;
    const std::size_t value = header.find(kTimeClosed) + kTimeClosed.size();
    header.replace(value, header.find('\r', value) - value, kNotClosed);
    header.resize(kHeaderBytes);
    return header;
}

bool StartsWith(const std::string& whole, std::string_view beginning) {
    return std::string_view(whole).substr(0, beginning.size()) == beginning;
}

}  // namespace

ExpectedFiles ExpectFiles(const ReferenceConvertResult& complete) {
    ExpectedFiles expected;
    for (const auto& [name, bytes] : complete.files) {
        const std::string header = bytes.substr(0, kHeaderBytes);
        expected[name] = {ProvisionalHeader(header), header, bytes.substr(kHeaderBytes)};
    }
    return expected;
}

testing::AssertionResult IsValidRemainder(const std::string& bytes, const ExpectedFile& expected) {
    if (bytes.size() < kHeaderBytes) {
        if (StartsWith(expected.provisionalHeader, bytes)) return testing::AssertionSuccess();
        return testing::AssertionFailure() << "its " << bytes.size() << " bytes begin no header";
    }
    const std::string_view header = std::string_view(bytes).substr(0, kHeaderBytes);
    const std::string_view data = std::string_view(bytes).substr(kHeaderBytes);
    const bool provisional = header == expected.provisionalHeader;
    if (!provisional && header != expected.finalHeader) {
        return testing::AssertionFailure() << "another header: " << header.substr(0, 400);
    }
    if (!StartsWith(expected.data, data)) {
        return testing::AssertionFailure()
               << "its " << data.size() << " bytes of data are no beginning of what they should be";
    }
    if (!provisional && data != expected.data) {
        return testing::AssertionFailure() << "it says it was closed, with " << data.size()
                                           << " of " << expected.data.size() << " bytes of data";
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult AreValidRemainders(const std::map<std::string, std::string>& files,
                                            const ExpectedFiles& expected) {
    for (const auto& [name, bytes] : files) {
        const auto file = expected.find(name);
        if (file == expected.end()) return testing::AssertionFailure() << "unexpected " << name;
        const auto valid = IsValidRemainder(bytes, file->second);
        if (!valid) return testing::AssertionFailure() << name << ": " << valid.message();
    }
    return testing::AssertionSuccess();
}

}  // namespace stalwick::test
