// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

namespace CameraInterface::SimulatedAdapter {

/// A memory of 2^32 bytes, of which only written pages take space. Addresses wrap modulo 2^32.
class SparseMemory {
public:
    /// @param untouched the value of a byte that was never written
    explicit SparseMemory(std::uint8_t untouched) : m_Untouched(untouched) {}

    /// Returns @p length bytes from @p address on. Throws std::bad_alloc if they do not fit into memory.
    std::string read(std::uint32_t address, std::uint32_t length) const;
    void write(std::uint32_t address, const std::string& data);
    /// Restores the initial value of @p length bytes.
    void clear(std::uint32_t address, std::uint32_t length);

private:
    static constexpr std::uint32_t kPageSize = 4096;
    using Page = std::array<std::uint8_t, kPageSize>;

    std::uint8_t m_Untouched;
    std::map<std::uint32_t, Page> m_Pages; // by address / kPageSize
};

} // namespace CameraInterface::SimulatedAdapter
