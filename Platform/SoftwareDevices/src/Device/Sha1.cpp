#include "Device/Sha1.h"

#include <cstddef>

namespace SoftwareDevices {

namespace {

constexpr std::size_t kBlockSize = 64;

std::uint32_t rotateLeft(std::uint32_t value, int bits) {
    return value << bits | value >> (32 - bits);
}

void digestBlock(std::array<std::uint32_t, 5>& state, const std::uint8_t* block) {
    std::uint32_t words[80];
    for (int i = 0; i < 16; ++i) {
        words[i] = std::uint32_t{block[4 * i]} << 24 | std::uint32_t{block[4 * i + 1]} << 16 |
                   std::uint32_t{block[4 * i + 2]} << 8 | block[4 * i + 3];
    }
    for (int i = 16; i < 80; ++i) {
        words[i] = rotateLeft(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
    }

    auto [a, b, c, d, e] = state;
    for (int i = 0; i < 80; ++i) {
        const std::uint32_t mix = i < 20   ? (b & c) | (~b & d)
                                  : i < 40 ? b ^ c ^ d
                                  : i < 60 ? (b & c) | (b & d) | (c & d)
                                           : b ^ c ^ d;
        constexpr std::uint32_t kRoundConstants[] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};
        const std::uint32_t next = rotateLeft(a, 5) + mix + e + kRoundConstants[i / 20] + words[i];
        e = d;
        d = c;
        c = rotateLeft(b, 30);
        b = a;
        a = next;
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d, state[4] + e};
}

} // namespace

std::array<std::uint8_t, 20> sha1(std::vector<std::uint8_t> message) {
    const std::uint64_t bits = std::uint64_t{message.size()} * 8;
    message.push_back(0x80);
    while (message.size() % kBlockSize != kBlockSize - 8) {
        message.push_back(0);
    }
    for (int shift = 56; shift >= 0; shift -= 8) {
        message.push_back(static_cast<std::uint8_t>(bits >> shift));
    }

    std::array<std::uint32_t, 5> state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    for (std::size_t offset = 0; offset < message.size(); offset += kBlockSize) {
        digestBlock(state, message.data() + offset);
    }

    std::array<std::uint8_t, 20> digest{};
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}

} // namespace SoftwareDevices
