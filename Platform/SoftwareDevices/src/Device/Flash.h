// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>

#include "Device/PagedMemory.h"
#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// NOR flash: erasing sets every bit, writing can only clear bits. Thread-safe. An access outside kFlashSize throws a
/// Refusal.
class Flash {
public:
    void erase(std::uint32_t address, std::uint32_t length);
    void write(std::uint32_t address, const std::uint8_t* data, std::uint32_t length);
    void rewrite(std::uint32_t address, const std::uint8_t* data, std::uint32_t length);
    void read(std::uint32_t address, std::uint8_t* buffer, std::uint32_t length) const;

    std::uint8_t status() const;
    void setStatus(std::uint8_t status);

private:
    static constexpr std::uint8_t kErased = 0xFF;

    mutable std::mutex m_Mutex; // guards the following members
    PagedMemory m_Cells{kErased};
    std::uint8_t m_Status = 0;
};

} // namespace SoftwareDevices
