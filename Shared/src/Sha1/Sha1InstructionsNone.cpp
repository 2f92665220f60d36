// SPDX-License-Identifier: Apache-2.0

#include "Sha1/Sha1Compression.h"

namespace Utilities {

Sha1Compression sha1CompressionByInstructions() {
    return nullptr;
}

} // namespace Utilities
