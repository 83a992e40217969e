// SPDX-License-Identifier: BSD-3-Clause
#include "logging/console_logger.h"

#include <array>
#include <cstdio>
#include <iostream>

#include "platform/console.h"
#include "platform/text_encoding.h"

namespace VtxLogging {

namespace {

// Each banner has 14 characters; the last one is a blank.
constexpr std::array<const wchar_t*, 6> kBanners = {
    L"-*  FATAL  *- ", L"-*  ERROR  *- ", L"-* WARNING *- ",
    L"-* NOTICE  *- ", L"-*  DATA   *- ", L"-*  DEBUG  *- ",
};
constexpr const wchar_t* kUnknownBanner = L"-* UNKNOWN *- ";

// Null if another unit logs before this one is initialized.
std::wstreambuf* const standardBuffer = std::wcout.rdbuf();

// The wide stream's own conversion fails for good at the first character that the locale lacks, and
// garbles text after narrow output. So the text is written to standard output as UTF-8, unless
// somebody has replaced the stream's buffer.
void WriteWide(const std::wstring& text) {
    if (standardBuffer != nullptr && std::wcout.rdbuf() != standardBuffer) {
        std::wcout << text;
        return;
    }
    const std::string bytes = stalwick::ToUtf8(text);
    if (!stalwick::WriteToStandardOutput(bytes)) std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

}  // namespace

std::int32_t ConsoleLogger::Log(std::uint32_t level, const std::wstring& message) {
    const wchar_t* banner = level < kBanners.size() ? kBanners[level] : kUnknownBanner;
    WriteWide(banner + message + L"\r\n");
    return 0;
}

}  // namespace VtxLogging
