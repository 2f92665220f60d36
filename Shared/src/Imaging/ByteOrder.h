// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace Imaging {

/// Whether this machine stores the low byte of a word first.
bool machineIsLittleEndian();

/// Swaps the bytes of @p samples 16-bit words; source and target may be the same.
void swapSampleBytes(const unsigned char* source, unsigned char* target, std::size_t samples);

} // namespace Imaging
