// SPDX-License-Identifier: Apache-2.0

#include "Sha1/Sha1Compression.h"

#include <array>
#include <iterator>
#include <utility>

namespace Utilities {

namespace {

using Word = unsigned int;
static_assert(sizeof(Word) == 4);

constexpr std::size_t kBlockBytes = 64;

constexpr Word rotateLeft(Word value, int bits) {
    return (value << bits) | (value >> (32 - bits));
}

Word readBigEndian(const unsigned char* bytes) {
    return Word{bytes[0]} << 24 | Word{bytes[1]} << 16 | Word{bytes[2]} << 8 | Word{bytes[3]};
}

/// The function and the constant of a round; they change every twenty rounds.
template <int Round>
constexpr Word mix(Word b, Word c, Word d) {
    if constexpr (Round < 20) {
        return (d ^ (b & (c ^ d))) + 0x5A827999;
    } else if constexpr (Round < 40) {
        return (b ^ c ^ d) + 0x6ED9EBA1;
    } else if constexpr (Round < 60) {
        return ((b & c) | (d & (b | c))) + 0x8F1BBCDC;
    } else {
        return (b ^ c ^ d) + 0xCA62C1D6;
    }
}

/// One round. The 80 words of the schedule live in a ring of 16, which starts as the block.
template <int Round>
[[gnu::always_inline]] inline void step(Word* ring, const Word& a, Word& b, const Word& c, const Word& d, Word& e) {
    Word& word = ring[Round % 16];
    if constexpr (Round >= 16) {
        word = rotateLeft(ring[(Round + 13) % 16] ^ ring[(Round + 8) % 16] ^ ring[(Round + 2) % 16] ^ word, 1);
    }
    e += rotateLeft(a, 5) + mix<Round>(b, c, d) + word;
    b = rotateLeft(b, 30);
}

/// Five rounds, after which every variable has its own role again.
template <int Round>
[[gnu::always_inline]] inline void fiveSteps(Word* ring, Word& a, Word& b, Word& c, Word& d, Word& e) {
    step<Round>(ring, a, b, c, d, e);
    step<Round + 1>(ring, e, a, b, c, d);
    step<Round + 2>(ring, d, e, a, b, c);
    step<Round + 3>(ring, c, d, e, a, b);
    step<Round + 4>(ring, b, c, d, e, a);
}

template <int... Fives>
[[gnu::always_inline]] inline void allSteps(Word* ring, Word& a, Word& b, Word& c, Word& d, Word& e,
                                            std::integer_sequence<int, Fives...> /*rounds*/) {
    (fiveSteps<5 * Fives>(ring, a, b, c, d, e), ...);
}

void compress(Word* state, const unsigned char* block) {
    Word ring[16]; // a local is kept in registers and has no aliases, unlike a member
    for (std::size_t index = 0; index < std::size(ring); ++index) {
        ring[index] = readBigEndian(block + 4 * index);
    }
    auto [a, b, c, d, e] = std::array{state[0], state[1], state[2], state[3], state[4]};
    allSteps(ring, a, b, c, d, e, std::make_integer_sequence<int, 16>());
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
    state[4] += e;
}

} // namespace

void compressSha1Portably(unsigned int* state, const unsigned char* blocks, std::size_t count) {
    for (; count != 0; --count, blocks += kBlockBytes) {
        compress(state, blocks);
    }
}

Sha1Compression fastestSha1Compression() {
    const Sha1Compression byInstructions = sha1CompressionByInstructions();
    return byInstructions != nullptr ? byInstructions : compressSha1Portably;
}

} // namespace Utilities
