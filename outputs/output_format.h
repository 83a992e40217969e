// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace stalwick {

// The names, sizes and fixed values of the outputs. docs/output-files.md describes the files.

// Numbers in the files are little-endian; records are written and read in the host's order.
static_assert(std::endian::native == std::endian::little);

inline constexpr std::size_t kOutputHeaderSize = 16384;  // bytes of header text, zero padded

// File names are the entity and the extension. The entity of an A/D channel is the prefix and its
// number from 1, that of an inertial channel the unit's prefix and the name of the axis.
inline constexpr wchar_t kChannelFileExtension[] = L".vcs";
inline constexpr wchar_t kEventFileExtension[] = L".vev";
inline constexpr wchar_t kRawDataFileExtension[] = L".vrd";
inline constexpr wchar_t kADChannelPrefix[] = L"CSC";
inline constexpr wchar_t kBaseImuPrefix[] = L"Base_";
inline constexpr wchar_t kAfeImuPrefix[] = L"AFE_";
inline constexpr wchar_t kUltrasonicEntity[] = L"Ultrasonic";
inline constexpr wchar_t kEventEntity[] = L"Events";
inline constexpr wchar_t kRawDataEntity[] = L"RawData";

// Values in the headers of every file of a kind.
inline constexpr wchar_t kChannelFileVersion[] = L"3.4";
inline constexpr wchar_t kEventFileVersion[] = L"3.2";
inline constexpr wchar_t kRawDataFileVersion[] = L"3.4";
inline constexpr double kImuFrequency = 3000.0;           // samples per second
inline constexpr double kUltrasonicFrequency = 210000.0;  // samples per second
inline constexpr double kChannelADBitVolts = 4e-06;
inline constexpr double kChannelInputRange = 131072.0;
inline constexpr std::uint32_t kRawADMaxValue = 8388608;
inline constexpr double kRawADBitVolts = 1.5625e-8;

}  // namespace stalwick
