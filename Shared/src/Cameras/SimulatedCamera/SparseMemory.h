// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

namespace CameraInterface::SimulatedAdapter {

/// A memory of 2^32 bytes, of which only the pages that were written take space. Addresses count on modulo 2^32.
class SparseMemory {
public:
    /// @param untouched what a byte holds that was never written
    explicit SparseMemory(std::uint8_t untouched) : m_Untouched(untouched) {}

    /// @p length bytes from @p address on. Throws std::bad_alloc where they do not fit into memory.
    std::string read(std::uint32_t address, std::uint32_t length) const;
    void write(std::uint32_t address, const std::string& data);
    /// Puts @p length bytes back to what they held untouched.
    void clear(std::uint32_t address, std::uint32_t length);

private:
    static constexpr std::uint32_t kPageSize = 4096;
    using Page = std::array<std::uint8_t, kPageSize>;

    std::uint8_t m_Untouched;
    std::map<std::uint32_t, Page> m_Pages; // by address / kPageSize
};

} // namespace CameraInterface::SimulatedAdapter
