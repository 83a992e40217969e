// SPDX-License-Identifier: BSD-3-Clause
#include "platform/file_checksum.h"

#include <cstddef>
#include <vector>

#include "platform/input_file.h"
#include "platform/sha256.h"

namespace stalwick {

namespace {

constexpr std::size_t kBytesAtATime = 1U << 20U;

std::string AsHexadecimal(const Sha256Digest& digest) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xFU];
    }
    return text;
}

}  // namespace

FileChecksum ChecksumOf(const std::wstring& path,
                        const std::atomic<std::uint8_t>& cancelRequested) {
    InputFile file;
    if (const SystemErrorCode error = file.Open(path); error != 0) return {{}, error};
    Sha256 sum;
    std::vector<std::byte> bytes(kBytesAtATime);
    for (std::size_t count = bytes.size(); count == bytes.size();) {
        if (cancelRequested.load(std::memory_order_relaxed) != 0) return {};
        const SystemErrorCode error = file.Read(bytes.data(), bytes.size(), count);
        if (error != 0) return {{}, error};
        sum.Add(bytes.data(), count);
    }
    return {AsHexadecimal(sum.Finish()), 0};
}

}  // namespace stalwick
