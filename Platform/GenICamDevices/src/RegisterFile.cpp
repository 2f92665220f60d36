// SPDX-License-Identifier: Apache-2.0

#include "RegisterFile.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace GenICamDevices {

namespace {

constexpr std::size_t kWord = 4;

template <typename Number, typename Bits>
Number fromBits(const std::uint8_t* bytes) {
    static_assert(sizeof(Number) == sizeof(Bits));
    const auto bits = static_cast<Bits>(bigEndian(bytes, sizeof(Bits)));
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

template <typename Bits, typename Number>
void putBits(std::uint8_t* bytes, Number number) {
    static_assert(sizeof(Number) == sizeof(Bits));
    Bits bits;
    std::memcpy(&bits, &number, sizeof bits);
    putBigEndian(bytes, sizeof bits, bits);
}

} // namespace

RegisterFile::RegisterFile(Bytes description)
    : m_Description(std::move(description)), m_DescriptionSize(m_Description.size()) {
    m_Description.resize((m_DescriptionSize + kWord - 1) / kWord * kWord);
    const std::vector<RegisterRow>& rows = registerRows();
    m_Image.resize(rows.back().address + rows.back().length);
    m_Places.resize(m_Image.size() / kWord);
    for (std::size_t index = 0; index < rows.size(); ++index) {
        std::uint16_t* const first = &m_Places[rows[index].address / kWord];
        std::fill_n(first, rows[index].length / kWord, static_cast<std::uint16_t>(index + 1));
    }
}

const RegisterRow* RegisterFile::rowAt(std::uint32_t address) const {
    const std::size_t word = address / kWord;
    return word < m_Places.size() && m_Places[word] != 0 ? &registerRows()[m_Places[word] - 1U] : nullptr;
}

GigEStatus RegisterFile::read(std::uint32_t address, std::size_t count, Bytes& bytes) const {
    if (address % kWord != 0 || count % kWord != 0) {
        return GigEStatus::BadAlignment;
    }
    if (address >= Address::kDescription) {
        const std::size_t first = address - Address::kDescription;
        if (first > m_Description.size() || count > m_Description.size() - first) {
            return GigEStatus::InvalidAddress;
        }
        const auto begin = m_Description.begin() + static_cast<std::ptrdiff_t>(first);
        bytes.insert(bytes.end(), begin, begin + static_cast<std::ptrdiff_t>(count));
        return GigEStatus::Success;
    }
    for (std::size_t offset = 0; offset < count; offset += kWord) {
        if (rowAt(static_cast<std::uint32_t>(address + offset)) == nullptr) {
            return GigEStatus::InvalidAddress;
        }
    }
    bytes.insert(bytes.end(), m_Image.begin() + address,
                 m_Image.begin() + address + static_cast<std::ptrdiff_t>(count));
    return GigEStatus::Success;
}

GigEStatus RegisterFile::checkWritable(std::uint32_t address, std::size_t count) const {
    if (address % kWord != 0 || count % kWord != 0) {
        return GigEStatus::BadAlignment;
    }
    if (address >= Address::kDescription) {
        return address - Address::kDescription < m_Description.size() ? GigEStatus::WriteProtect
                                                                      : GigEStatus::InvalidAddress;
    }
    for (std::size_t offset = 0; offset < count; offset += kWord) {
        const RegisterRow* const row = rowAt(static_cast<std::uint32_t>(address + offset));
        if (row == nullptr) {
            return GigEStatus::InvalidAddress;
        }
        if (row->access == Access::ReadOnly) {
            return GigEStatus::WriteProtect;
        }
    }
    return GigEStatus::Success;
}

void RegisterFile::store(std::uint32_t address, const std::uint8_t* bytes, std::size_t count) {
    std::copy_n(bytes, count, m_Image.begin() + address);
}

std::uint32_t RegisterFile::integer(std::uint32_t address) const {
    return static_cast<std::uint32_t>(bigEndian(&m_Image[address], 4));
}

void RegisterFile::setInteger(std::uint32_t address, std::uint32_t value) {
    putBigEndian(&m_Image[address], 4, value);
}

void RegisterFile::setLong(std::uint32_t address, std::uint64_t value) {
    putBigEndian(&m_Image[address], 8, value);
}

float RegisterFile::real(std::uint32_t address) const {
    return fromBits<float, std::uint32_t>(&m_Image[address]);
}

double RegisterFile::longReal(std::uint32_t address) const {
    return fromBits<double, std::uint64_t>(&m_Image[address]);
}

void RegisterFile::setReal(std::uint32_t address, float value) {
    putBits<std::uint32_t>(&m_Image[address], value);
}

void RegisterFile::setLongReal(std::uint32_t address, double value) {
    putBits<std::uint64_t>(&m_Image[address], value);
}

void RegisterFile::setText(std::uint32_t address, const std::string& text) {
    const std::size_t length = rowAt(address)->length;
    const std::size_t used = std::min(text.size(), length - 1);
    std::copy_n(text.begin(), used, m_Image.begin() + address);
    std::fill_n(m_Image.begin() + static_cast<std::ptrdiff_t>(address + used), length - used, std::uint8_t{0});
}

double realOf(const std::uint8_t* bytes, std::size_t length) {
    return length == 4 ? fromBits<float, std::uint32_t>(bytes) : fromBits<double, std::uint64_t>(bytes);
}

} // namespace GenICamDevices
