// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "GigEWire.h"
#include "RegisterTable.h"

namespace GenICamDevices {

/// The registers of a camera and its description. Addresses that come from outside are checked; those that the camera's
/// own code uses are registers.
class RegisterFile {
public:
    explicit RegisterFile(Bytes description);

    /// The register that a word belongs to.
    /// @return nullptr if there is none
    const RegisterRow* rowAt(std::uint32_t address) const;

    /// Appends the bytes of a range.
    /// @return InvalidAddress unless all of them belong to registers or the description, BadAlignment for an odd
    /// address
    GigEStatus read(std::uint32_t address, std::size_t count, Bytes& bytes) const;

    /// Whether a range can be written at all.
    GigEStatus checkWritable(std::uint32_t address, std::size_t count) const;

    void store(std::uint32_t address, const std::uint8_t* bytes, std::size_t count);
    const std::uint8_t* bytesOf(std::uint32_t address) const { return &m_Image[address]; }

    std::uint32_t integer(std::uint32_t address) const;
    void setInteger(std::uint32_t address, std::uint32_t value);
    void setLong(std::uint32_t address, std::uint64_t value);
    float real(std::uint32_t address) const;
    double longReal(std::uint32_t address) const;
    void setReal(std::uint32_t address, float value);
    void setLongReal(std::uint32_t address, double value);
    /// Fills the rest of the register with zeros, of which there is at least one.
    void setText(std::uint32_t address, const std::string& text);

    std::size_t descriptionSize() const { return m_DescriptionSize; }

private:
    Bytes m_Image;                       ///< of all addresses up to the last register
    std::vector<std::uint16_t> m_Places; ///< by word: one more than the index of its row; 0 if there is no register
    Bytes m_Description;                 ///< filled up to whole words
    std::size_t m_DescriptionSize;
};

/// The value of a register that is a Real.
double realOf(const std::uint8_t* bytes, std::size_t length);

} // namespace GenICamDevices
