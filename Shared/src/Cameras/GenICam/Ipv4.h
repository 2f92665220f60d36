// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>

/// IPv4 addresses as numbers, the first octet in the most significant byte.
namespace CameraInterface::GenICam::Ipv4 {

/// Reads four decimal numbers with dots; nothing for any other text.
inline std::optional<std::uint32_t> parse(const std::string& text) {
    std::uint32_t address = 0;
    const char* position = text.data();
    const char* const end = position + text.size();
    for (int octet = 0; octet < 4; ++octet) {
        if (octet > 0 && (position == end || *position++ != '.')) {
            return std::nullopt;
        }
        std::uint32_t number = 0;
        const auto [next, error] = std::from_chars(position, end, number);
        if (error != std::errc() || number > 255 || next - position > 3) {
            return std::nullopt;
        }
        address = address << 8 | number;
        position = next;
    }
    return position == end ? std::optional(address) : std::nullopt;
}

inline std::string format(std::uint32_t address) {
    return std::to_string(address >> 24) + '.' + std::to_string(address >> 16 & 255U) + '.' +
           std::to_string(address >> 8 & 255U) + '.' + std::to_string(address & 255U);
}

/// Whether a number is a mask: ones, then zeros, and room for two devices at least.
inline bool isMask(std::uint32_t mask) {
    const std::uint32_t hosts = ~mask;
    return mask != 0 && hosts >= 3 && (hosts & (hosts + 1)) == 0;
}

inline int prefixLength(std::uint32_t mask) {
    int length = 0;
    for (; mask != 0; mask <<= 1) {
        ++length;
    }
    return length;
}

/// Whether a device can have the address: it is neither a network, nor everybody of one, nor a group.
inline bool isOfDevice(std::uint32_t address, std::uint32_t mask) {
    const std::uint32_t device = address & ~mask;
    return device != 0 && device != ~mask && address >> 24 != 0 && address >> 28 < 0xE;
}

inline bool isLinkLocal(std::uint32_t address) {
    return address >> 16 == 0xA9FE;
}

} // namespace CameraInterface::GenICam::Ipv4
