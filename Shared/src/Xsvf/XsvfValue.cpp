// SPDX-License-Identifier: Apache-2.0

#include "Xsvf/XsvfValue.h"

#include <cstring>

namespace Utilities {

bool XsvfValue::bit(std::size_t index) const {
    return index / 8 < m_Length && (m_Bytes[byteOf(index)] >> (index % 8) & 1U) != 0;
}

void XsvfValue::setBit(std::size_t index, bool value) {
    if (index / 8 >= m_Length) {
        return;
    }
    const auto mask = static_cast<std::uint8_t>(1U << (index % 8));
    std::uint8_t& byte = m_Bytes[byteOf(index)];
    byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
}

std::size_t XsvfValue::countOnes() const {
    std::size_t ones = 0;
    for (std::size_t index = 0; index < m_Length * 8; ++index) {
        ones += bit(index) ? 1 : 0;
    }
    return ones;
}

void XsvfValue::add(const XsvfValue& other) {
    unsigned int carry = 0;
    for (std::size_t place = 1; place <= m_Length; ++place) { // from the end
        const unsigned int addend = place <= other.m_Length ? other.m_Bytes[other.m_Length - place] : 0;
        const unsigned int sum = m_Bytes[m_Length - place] + addend + carry;
        m_Bytes[m_Length - place] = static_cast<std::uint8_t>(sum);
        carry = sum >> 8;
    }
}

bool XsvfValue::equals(const XsvfValue& other, const XsvfValue* mask) const {
    if (mask == nullptr) {
        return std::memcmp(data(), other.data(), m_Length) == 0;
    }
    unsigned int different = 0; // one pass without an early exit, so that the compiler vectorises it
    for (std::size_t index = 0; index < m_Length; ++index) {
        different |= static_cast<unsigned int>(m_Bytes[index] ^ other.m_Bytes[index]) & mask->m_Bytes[index];
    }
    return different == 0;
}

} // namespace Utilities
