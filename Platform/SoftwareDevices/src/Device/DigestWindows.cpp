// SPDX-License-Identifier: Apache-2.0

#include "Device/Digest.h"

#include <system_error>

#include <windows.h>

#include <bcrypt.h>

namespace SoftwareDevices {

std::array<std::uint8_t, 20> sha1Of(const std::vector<std::uint8_t>& data) {
    std::array<std::uint8_t, 20> digest{};
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    NTSTATUS status = BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA1_ALGORITHM, nullptr, 0);
    if (status >= 0) {
        status = BCryptHash(algorithm, nullptr, 0, const_cast<PUCHAR>(data.data()), static_cast<ULONG>(data.size()),
                            digest.data(), static_cast<ULONG>(digest.size()));
        BCryptCloseAlgorithmProvider(algorithm, 0);
    }
    if (status < 0) {
        throw std::system_error(status, std::system_category());
    }
    return digest;
}

} // namespace SoftwareDevices
