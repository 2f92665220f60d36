// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace Utilities {

/// Compresses consecutive blocks of 64 bytes into a chaining value of five words (FIPS 180).
using Sha1Compression = void (*)(unsigned int* state, const unsigned char* blocks, std::size_t count);

/// Runs on every processor.
void compressSha1Portably(unsigned int* state, const unsigned char* blocks, std::size_t count);

/// The compression by SHA instructions; null if the processor has none.
Sha1Compression sha1CompressionByInstructions();

/// The fastest compression that the processor supports.
Sha1Compression fastestSha1Compression();

} // namespace Utilities
