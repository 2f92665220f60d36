// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Utilities {

/// A number of up to 7000 bytes, most significant byte first, in a buffer that never grows. Between its length and its
/// capacity are the bytes of earlier values.
class XsvfValue {
public:
    static constexpr std::size_t kMaximumBytes = 7000;

    XsvfValue() : m_Bytes(kMaximumBytes + 1) {}

    std::size_t length() const { return m_Length; }
    void setLength(std::size_t length) { m_Length = length; }
    std::uint8_t* data() { return m_Bytes.data(); }
    const std::uint8_t* data() const { return m_Bytes.data(); }

    /// Its first @p length bytes; what lies behind a shorter value is of earlier ones.
    std::vector<unsigned char> bytes(std::size_t length) const { return {data(), data() + length}; }

    /// Bits count from the least significant one; those beyond the length are 0.
    bool bit(std::size_t index) const;
    void setBit(std::size_t index, bool value);
    std::size_t countOnes() const;
    /// What does not fit into the length is lost.
    void add(const XsvfValue& other);
    /// Whether every byte of this value is that of @p other in the same place, in the bits of @p mask; null: all bits.
    bool equals(const XsvfValue& other, const XsvfValue* mask) const;

private:
    std::size_t byteOf(std::size_t bit) const { return m_Length - 1 - bit / 8; }

    std::size_t m_Length = 0;
    std::vector<std::uint8_t> m_Bytes;
};

} // namespace Utilities
