// SPDX-License-Identifier: Apache-2.0

#include "Device/Flash.h"

#include "Refusal.h"

namespace SoftwareDevices {

namespace {

void requireInside(std::uint32_t address, std::uint32_t length) {
    require(std::uint64_t{address} + length <= kFlashSize, kOutOfRange);
}

} // namespace

void Flash::erase(std::uint32_t address, std::uint32_t length) {
    requireInside(address, length);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Cells.reset(address, length);
}

void Flash::write(std::uint32_t address, const std::uint8_t* data, std::uint32_t length) {
    requireInside(address, length);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Cells.change(address, length, [data](std::uint8_t* cells, std::uint32_t done, std::uint32_t bytes) {
        for (std::uint32_t i = 0; i < bytes; ++i) {
            cells[i] &= data[done + i];
        }
    });
}

void Flash::rewrite(std::uint32_t address, const std::uint8_t* data, std::uint32_t length) {
    requireInside(address, length);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Cells.write(address, data, length);
}

void Flash::read(std::uint32_t address, std::uint8_t* buffer, std::uint32_t length) const {
    requireInside(address, length);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Cells.read(address, buffer, length);
}

std::uint8_t Flash::status() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Status;
}

void Flash::setStatus(std::uint8_t status) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Status = status;
}

} // namespace SoftwareDevices
