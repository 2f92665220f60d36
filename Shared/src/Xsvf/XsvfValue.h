// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Utilities {

/// A number of up to 7000 bytes, most significant byte first, in a buffer that never grows. Bytes between its length
/// and its capacity belong to earlier values.
class XsvfValue {
public:
    static constexpr std::size_t kMaximumBytes = 7000;

    XsvfValue() : m_Bytes(kMaximumBytes + 1) {}

    std::size_t length() const { return m_Length; }
    void setLength(std::size_t length) { m_Length = length; }
    std::uint8_t* data() { return m_Bytes.data(); }
    const std::uint8_t* data() const { return m_Bytes.data(); }

    /// The first @p length bytes; those beyond the end of a shorter value belong to earlier values.
    std::vector<unsigned char> bytes(std::size_t length) const { return {data(), data() + length}; }

    /// A bit, counted from the least significant one; bits beyond the length are 0.
    bool bit(std::size_t index) const;
    void setBit(std::size_t index, bool value);
    std::size_t countOnes() const;
    /// Adds @p other; bytes that do not fit into the length are lost.
    void add(const XsvfValue& other);
    /// Whether every byte of this value equals the byte of @p other in the same place, in the bits of @p mask; null:
    /// all bits.
    bool equals(const XsvfValue& other, const XsvfValue* mask) const;

private:
    std::size_t byteOf(std::size_t bit) const { return m_Length - 1 - bit / 8; }

    std::size_t m_Length = 0;
    std::vector<std::uint8_t> m_Bytes;
};

} // namespace Utilities
