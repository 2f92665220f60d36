// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

namespace GenICamDevices {

enum class Access : std::uint8_t { ReadOnly, WriteOnly, ReadWrite };

/// How the bytes of a register are understood when they are written.
enum class RegisterKind : std::uint8_t {
    Bytes,   ///< anything
    Integer, ///< 4 bytes, without sign
    Real,    ///< a float of 4 bytes or a double of 8 bytes
    Command  ///< an action; reads as 0
};

/// When a register can be written, and what with it.
enum class Guard : std::uint8_t {
    None,
    Idle,     ///< only while no frames are sent
    Settings, ///< any time; part of the user sets
    Format    ///< only while no frames are sent; part of the user sets
};

struct RegisterRow {
    std::uint32_t address;
    std::uint32_t length; ///< a multiple of 4
    Access access;
    RegisterKind kind = RegisterKind::Bytes;
    Guard guard = Guard::None;
    double minimum = 0;
    double maximum = 4294967295.0;
    std::uint32_t increment = 1; ///< of an integer
};

/// All registers but the description, by address.
const std::vector<RegisterRow>& registerRows();

} // namespace GenICamDevices
