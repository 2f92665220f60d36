// SPDX-License-Identifier: Apache-2.0

#include "Imaging/ByteOrder.h"

#include <cstdint>
#include <cstring>

namespace Imaging {

bool machineIsLittleEndian() {
    const std::uint16_t probe = 1;
    unsigned char first = 0;
    std::memcpy(&first, &probe, 1);
    return first == 1;
}

void swapSampleBytes(const unsigned char* source, unsigned char* target, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, source + 2 * i, sizeof sample);
        sample = static_cast<std::uint16_t>((sample >> 8) | (sample << 8));
        std::memcpy(target + 2 * i, &sample, sizeof sample);
    }
}

} // namespace Imaging
