// SPDX-License-Identifier: BSD-3-Clause
#include "platform/sha256.h"

#include <stdexcept>

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace stalwick {

namespace {

void Require(int succeeded) {
    if (succeeded != 1) throw std::runtime_error("cannot compute a SHA-256");
}

}  // namespace

struct Sha256::State {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context{EVP_MD_CTX_new(),
                                                                    &EVP_MD_CTX_free};
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    // A hash needs no system settings. They could name modules to load, for which a statically
    // linked program has no loader.
    Require(OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr));
    Require(state_->context != nullptr ? 1 : 0);
    Require(EVP_DigestInit_ex(state_->context.get(), EVP_sha256(), nullptr));
}

Sha256::~Sha256() = default;

void Sha256::Add(const void* data, std::size_t size) {
    Require(EVP_DigestUpdate(state_->context.get(), data, size));
}

Sha256Digest Sha256::Finish() {
    Sha256Digest digest{};
    Require(EVP_DigestFinal_ex(state_->context.get(), digest.data(), nullptr));
    return digest;
}

}  // namespace stalwick
