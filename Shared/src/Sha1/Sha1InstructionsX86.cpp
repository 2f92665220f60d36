// SPDX-License-Identifier: Apache-2.0

#include "Sha1/Sha1Compression.h"

#include <cpuid.h>
#include <immintrin.h>
#include <utility>

#define QUILL_SHA_INSTRUCTIONS [[gnu::target("sha,sse4.1,ssse3")]]

namespace Utilities {

namespace {

constexpr int kVectors = 4; // of the block, four words each
constexpr int kSteps = 20;  // of four rounds each

/// Four rounds. The schedule's next words live in a ring of four vectors, which starts as the block.
/// @param e before: the last rounds' word a, four rounds back; after: this step's
template <int Step>
QUILL_SHA_INSTRUCTIONS inline void fourRounds(__m128i* ring, __m128i& abcd, __m128i& e) {
    __m128i& words = ring[Step % kVectors];
    if constexpr (Step >= kVectors) {
        words = _mm_sha1msg1_epu32(words, ring[(Step + 1) % kVectors]);
        words = _mm_xor_si128(words, ring[(Step + 2) % kVectors]);
        words = _mm_sha1msg2_epu32(words, ring[(Step + 3) % kVectors]);
    }
    // The first word e is not a rotated word a.
    const __m128i input = Step == 0 ? _mm_add_epi32(e, words) : _mm_sha1nexte_epu32(e, words);
    e = abcd;
    abcd = _mm_sha1rnds4_epu32(abcd, input, Step / 5);
}

template <int... Steps>
QUILL_SHA_INSTRUCTIONS inline void allRounds(__m128i* ring, __m128i& abcd, __m128i& e,
                                             std::integer_sequence<int, Steps...> /*steps*/) {
    (fourRounds<Steps>(ring, abcd, e), ...);
}

QUILL_SHA_INSTRUCTIONS void compressByInstructions(unsigned int* state, const unsigned char* blocks,
                                                   std::size_t count) {
    const __m128i bigEndian = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
    constexpr int kReversed = 0x1B;
    auto* const words = reinterpret_cast<__m128i*>(state);
    __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(words), kReversed);
    __m128i e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
    for (; count != 0; --count) {
        __m128i ring[kVectors];
        for (__m128i& vector : ring) {
            vector = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks)), bigEndian);
            blocks += sizeof vector;
        }
        const __m128i abcdBefore = abcd;
        const __m128i eBefore = e;
        allRounds(ring, abcd, e, std::make_integer_sequence<int, kSteps>());
        e = _mm_sha1nexte_epu32(e, eBefore);
        abcd = _mm_add_epi32(abcd, abcdBefore);
    }
    _mm_storeu_si128(words, _mm_shuffle_epi32(abcd, kReversed));
    state[4] = static_cast<unsigned int>(_mm_extract_epi32(e, 3));
}

bool hasShaInstructions() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    return __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & bit_SHA) != 0 &&
           __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (ecx & bit_SSSE3) != 0 && (ecx & bit_SSE4_1) != 0;
}

} // namespace

Sha1Compression sha1CompressionByInstructions() {
    static const Sha1Compression compression = hasShaInstructions() ? compressByInstructions : nullptr;
    return compression;
}

} // namespace Utilities
