// SPDX-License-Identifier: Apache-2.0

#include "Device/Digest.h"

#include <nettle/sha1.h>

namespace SoftwareDevices {

std::array<std::uint8_t, 20> sha1Of(const std::vector<std::uint8_t>& data) {
    sha1_ctx context{};
    sha1_init(&context);
    sha1_update(&context, data.size(), data.data());
    std::array<std::uint8_t, SHA1_DIGEST_SIZE> digest{};
    sha1_digest(&context, digest.size(), digest.data());
    return digest;
}

} // namespace SoftwareDevices
