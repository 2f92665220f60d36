#include <array>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include "Claims.h"
#include "Utilities/CSHA1.h"

namespace Benchmarks {

namespace {

/// The compression is portable code; OpenSSL uses the processor's SHA instructions where there are. 0.42 of its speed.
constexpr double kPortableLimit = 1 / 0.42;
constexpr std::size_t kMessageBytes = 1 << 20;
constexpr std::size_t kDigestBytes = 20;

std::pair<Variant, Variant> hashing() {
    const auto message = std::make_shared<std::vector<unsigned char>>(kMessageBytes);
    std::mt19937 random(1);
    for (unsigned char& byte : *message) {
        byte = static_cast<unsigned char>(random());
    }
    return {{[message] {
                std::array<unsigned char, kDigestBytes> digest{};
                EVP_Digest(message->data(), message->size(), digest.data(), nullptr, EVP_sha1(), nullptr);
                benchmark::DoNotOptimize(digest);
            }},
            {[message] {
                std::array<unsigned char, kDigestBytes> digest{};
                CSHA1 hasher;
                hasher.Update(message->data(), static_cast<unsigned int>(message->size()));
                hasher.Final();
                hasher.GetHash(digest.data());
                benchmark::DoNotOptimize(digest);
            }}};
}

} // namespace

std::vector<Claim> hashClaims(Scope) {
    return {{"P11", "SHA-1 of 1 MiB, portable", "OpenSSL", kPortableLimit, hashing}};
}

} // namespace Benchmarks
