// SPDX-License-Identifier: BSD-3-Clause
#include "platform/sha256.h"

#include <algorithm>
#include <stdexcept>

#include "platform/windows/windows_api.h"

#include <bcrypt.h>

namespace stalwick {

namespace {

void Require(NTSTATUS status) {
    if (status < 0) throw std::runtime_error("cannot compute a SHA-256");
}

}  // namespace

struct Sha256::State {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;

    ~State() {
        if (hash != nullptr) ::BCryptDestroyHash(hash);
        if (algorithm != nullptr) ::BCryptCloseAlgorithmProvider(algorithm, 0);
    }
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    Require(::BCryptOpenAlgorithmProvider(&state_->algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0));
    Require(::BCryptCreateHash(state_->algorithm, &state_->hash, nullptr, 0, nullptr, 0, 0));
}

Sha256::~Sha256() = default;

void Sha256::Add(const void* data, std::size_t size) {
    constexpr std::size_t kMost = 1U << 30U;  // the call takes 32-bit sizes
    auto* bytes = static_cast<UCHAR*>(const_cast<void*>(data));
    while (size != 0) {
        const std::size_t part = std::min(size, kMost);
        Require(::BCryptHashData(state_->hash, bytes, static_cast<ULONG>(part), 0));
        bytes += part;
        size -= part;
    }
}

Sha256Digest Sha256::Finish() {
    Sha256Digest digest{};
    Require(::BCryptFinishHash(state_->hash, digest.data(), static_cast<ULONG>(digest.size()), 0));
    return digest;
}

}  // namespace stalwick
