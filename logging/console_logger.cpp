#include "logging/console_logger.h"

#include <array>
#include <iostream>

namespace VtxLogging {

namespace {

// Each banner has 14 characters, its last one a blank.
constexpr std::array<const wchar_t*, 6> kBanners = {
    L"-*  FATAL  *- ", L"-*  ERROR  *- ", L"-* WARNING *- ",
    L"-* NOTICE  *- ", L"-*  DATA   *- ", L"-*  DEBUG  *- ",
};
constexpr const wchar_t* kUnknownBanner = L"-* UNKNOWN *- ";

}  // namespace

std::int32_t ConsoleLogger::Log(std::uint32_t level, const std::wstring& message) {
    const wchar_t* banner = level < kBanners.size() ? kBanners[level] : kUnknownBanner;
    std::wcout << banner << message << L"\r\n";
    return 0;
}

}  // namespace VtxLogging
