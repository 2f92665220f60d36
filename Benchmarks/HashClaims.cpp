// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include "Claims.h"
#include "Sha1/Sha1Compression.h"
#include "Utilities/CSHA1.h"

namespace Benchmarks {

namespace {

constexpr double kInstructionsLimit = 1 / 0.95;
/// OpenSSL uses the processor's SHA instructions, if it has them.
constexpr double kPortableLimit = 1 / 0.42;
constexpr std::size_t kDigestBytes = 20;
constexpr std::size_t kBlockBytes = 64;

struct Message {
    const char* name;
    std::size_t bytes;
};
constexpr Message kLongMessage{"1 MiB", 1 << 20};
constexpr Message kShortMessages[] = {{"1000 bytes", 1000}, {"40 bytes", 40}};

using SharedBytes = std::shared_ptr<std::vector<unsigned char>>;

SharedBytes randomBytes(std::size_t count) {
    auto bytes = std::make_shared<std::vector<unsigned char>>(count);
    std::mt19937 random(1);
    for (unsigned char& byte : *bytes) {
        byte = static_cast<unsigned char>(random());
    }
    return bytes;
}

Variant openSsl(const SharedBytes& message) {
    return {[message] {
        std::array<unsigned char, kDigestBytes> digest{};
        EVP_Digest(message->data(), message->size(), digest.data(), nullptr, EVP_sha1(), nullptr);
        benchmark::DoNotOptimize(digest);
    }};
}

/// Hashes with the compression that the library selects on this processor.
std::pair<Variant, Variant> hashing(std::size_t bytes) {
    const SharedBytes message = randomBytes(bytes);
    return {openSsl(message), {[message] {
                std::array<unsigned char, kDigestBytes> digest{};
                CSHA1 hasher;
                hasher.Update(message->data(), static_cast<unsigned int>(message->size()));
                hasher.Final();
                hasher.GetHash(digest.data());
                benchmark::DoNotOptimize(digest);
            }}};
}

/// Compresses as many blocks as OpenSSL, including the one for the length.
std::pair<Variant, Variant> portableCompression() {
    const SharedBytes blocks = randomBytes(kLongMessage.bytes + kBlockBytes);
    return {openSsl(randomBytes(kLongMessage.bytes)), {[blocks] {
                std::array<unsigned int, kDigestBytes / 4> state{};
                Utilities::compressSha1Portably(state.data(), blocks->data(), blocks->size() / kBlockBytes);
                benchmark::DoNotOptimize(state);
            }}};
}

} // namespace

std::vector<Claim> hashClaims(Scope) {
    std::vector<Claim> claims{{"P11", "SHA-1 of 1 MiB, portable", "OpenSSL", kPortableLimit, portableCompression}};
    if (Utilities::sha1CompressionByInstructions() == nullptr) {
        return claims;
    }
    const auto add = [&](const Message& message) {
        claims.push_back({"P11", std::string("SHA-1 of ") + message.name + ", SHA instructions", "OpenSSL",
                          kInstructionsLimit, [bytes = message.bytes] { return hashing(bytes); }});
    };
    add(kLongMessage);
    for (const Message& message : kShortMessages) {
        add(message);
    }
    return claims;
}

} // namespace Benchmarks
