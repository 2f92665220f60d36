// SPDX-License-Identifier: Apache-2.0

#include "Gvcp.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "Cameras/GenICam/Ipv4.h"

namespace GenICamAdapter::Gvcp {

namespace {

constexpr std::uint8_t kKey = 0x42;
constexpr std::uint8_t kAnswerRequired = 0x01;
/// Lets a camera with an address of another network answer to everybody.
constexpr std::uint8_t kBroadcastAnswer = 0x10;
constexpr std::size_t kHeaderSize = 8;

// The answer to a discovery is the first bytes of the bootstrap registers.
constexpr std::size_t kDiscoverySize = 0xF8;
constexpr std::size_t kHardwareAddressAt = 0x0A;
constexpr std::size_t kSupportedConfigurationsAt = 0x10;
constexpr std::size_t kEnabledConfigurationsAt = 0x14;
constexpr std::size_t kAddressAt = 0x24;
constexpr std::size_t kMaskAt = 0x34;
constexpr std::size_t kGatewayAt = 0x44;

struct TextField {
    std::size_t at;
    std::size_t size;
};
constexpr TextField kVendor{0x48, 32};
constexpr TextField kModel{0x68, 32};
constexpr TextField kVersion{0x88, 32};
constexpr TextField kSerialNumber{0xD8, 16};
constexpr TextField kUserName{0xE8, 16};

void append16(Packet& packet, std::uint32_t value) {
    packet.push_back(static_cast<std::uint8_t>(value >> 8));
    packet.push_back(static_cast<std::uint8_t>(value));
}

Packet makeHeader(Command command, std::uint16_t id, std::size_t payload, std::uint8_t flags = kAnswerRequired) {
    Packet packet;
    packet.reserve(kHeaderSize + payload);
    packet.push_back(kKey);
    packet.push_back(flags);
    append16(packet, static_cast<std::uint16_t>(command));
    append16(packet, static_cast<std::uint32_t>(payload));
    append16(packet, id);
    return packet;
}

std::string addressTextOf(const std::uint8_t* octets) {
    return CameraInterface::GenICam::Ipv4::format(readBig32(octets));
}

std::string textOf(const Answer& answer, const TextField& field) {
    const std::uint8_t* const begin = answer.payload + field.at;
    std::string text(begin, std::find(begin, begin + field.size, 0));
    const auto isUnprintable = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    text.erase(std::remove_if(text.begin(), text.end(), isUnprintable), text.end());
    const std::size_t end = text.find_last_not_of(' ');
    return end == std::string::npos ? "" : text.substr(0, end + 1);
}

} // namespace

void appendBig32(Packet& packet, std::uint32_t value) {
    append16(packet, value >> 16);
    append16(packet, value);
}

Packet makeDiscovery(std::uint16_t id) {
    return makeHeader(Command::Discovery, id, 0, kAnswerRequired | kBroadcastAnswer);
}

Packet makeForceAddress(std::uint16_t id, std::uint64_t hardwareAddress, std::uint32_t address, std::uint32_t mask,
                        std::uint32_t gateway) {
    constexpr std::size_t kReserved = 12;
    Packet packet = makeHeader(Command::ForceAddress, id, 56, kAnswerRequired | kBroadcastAnswer);
    append16(packet, 0);
    append16(packet, static_cast<std::uint32_t>(hardwareAddress >> 32));
    appendBig32(packet, static_cast<std::uint32_t>(hardwareAddress));
    for (const std::uint32_t number : {address, mask, gateway}) {
        packet.insert(packet.end(), kReserved, 0);
        appendBig32(packet, number);
    }
    return packet;
}

Packet makeReadRegister(std::uint16_t id, std::uint32_t address) {
    Packet packet = makeHeader(Command::ReadRegister, id, 4);
    appendBig32(packet, address);
    return packet;
}

Packet makeWriteRegister(std::uint16_t id, std::uint32_t address, std::uint32_t value) {
    Packet packet = makeHeader(Command::WriteRegister, id, 8);
    appendBig32(packet, address);
    appendBig32(packet, value);
    return packet;
}

Packet makeReadMemory(std::uint16_t id, std::uint32_t address, std::uint16_t bytes) {
    Packet packet = makeHeader(Command::ReadMemory, id, 8);
    appendBig32(packet, address);
    appendBig32(packet, bytes); // after two reserved bytes
    return packet;
}

Packet makeWriteMemory(std::uint16_t id, std::uint32_t address, const std::uint8_t* data, std::size_t bytes) {
    Packet packet = makeHeader(Command::WriteMemory, id, 4 + bytes);
    appendBig32(packet, address);
    packet.insert(packet.end(), data, data + bytes);
    return packet;
}

Packet makeAnswer(std::uint16_t id, Command command, const Packet& payload, std::uint16_t status) {
    Packet packet;
    append16(packet, status);
    append16(packet, static_cast<std::uint32_t>(command) + 1);
    append16(packet, static_cast<std::uint32_t>(payload.size()));
    append16(packet, id);
    packet.insert(packet.end(), payload.begin(), payload.end());
    return packet;
}

std::uint16_t readBig16(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::uint32_t readBig32(const std::uint8_t* bytes) {
    return std::uint32_t{readBig16(bytes)} << 16 | readBig16(bytes + 2);
}

std::optional<Answer> parseAnswer(const std::uint8_t* packet, std::size_t size) {
    if (size < kHeaderSize || readBig16(packet + 4) > size - kHeaderSize) {
        return std::nullopt;
    }
    return Answer{readBig16(packet), readBig16(packet + 2), readBig16(packet + 6), packet + kHeaderSize,
                  readBig16(packet + 4)};
}

Match matchOf(const Answer& answer, std::uint16_t id, Command command) {
    if (answer.id != id) {
        return Match::Foreign;
    }
    if (answer.kind == kPending && answer.size >= 4) {
        return Match::Pending;
    }
    return answer.kind == static_cast<std::uint16_t>(command) + 1 ? Match::Ours : Match::Foreign;
}

std::uint16_t pendingMsOf(const Answer& answer) {
    return readBig16(answer.payload + 2);
}

const std::uint8_t* memoryOf(const Answer& answer, std::size_t bytes) {
    constexpr std::size_t kAddressSize = 4;
    return answer.size < kAddressSize + bytes ? nullptr : answer.payload + kAddressSize;
}

std::optional<DescriptionPlace> placeOfDescription(const std::string& url) {
    constexpr std::string_view kScheme = "local:";
    const bool isLocal =
        url.size() > kScheme.size() && std::equal(kScheme.begin(), kScheme.end(), url.begin(),
                                                  [](char expected, char c) { return expected == (c | 0x20); });
    const std::size_t beforeSize = url.rfind(';');
    const std::size_t beforeAddress = url.rfind(';', beforeSize - 1);
    if (!isLocal || beforeSize == std::string::npos || beforeAddress == std::string::npos) {
        return std::nullopt;
    }
    DescriptionPlace place;
    const auto isRead = [&url](std::size_t separator, std::size_t end, auto& number) {
        const char* const last = url.data() + std::min(end, url.size());
        const std::size_t begin = separator + (url.compare(separator + 1, 2, "0x") == 0 ? 3 : 1);
        const auto [next, error] = std::from_chars(std::min(url.data() + begin, last), last, number, 16);
        return error == std::errc() && next == last;
    };
    return isRead(beforeAddress, beforeSize, place.address) && isRead(beforeSize, url.find('?', beforeSize), place.size)
               ? std::optional(place)
               : std::nullopt;
}

std::string nameOfStatus(std::uint16_t status) {
    constexpr std::array kNames{"not implemented",
                                "invalid parameter",
                                "invalid address",
                                "write protected",
                                "wrong alignment",
                                "access denied",
                                "busy",
                                "local problem",
                                "message mismatch",
                                "invalid protocol",
                                "no message"};
    const std::size_t index = status - std::size_t{0x8001};
    if (index < kNames.size()) {
        return kNames.at(index);
    }
    std::array<char, 16> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "status 0x%04X", unsigned{status}));
    return text.data();
}

std::optional<DeviceRecord> parseDiscovery(const Answer& answer) {
    if (answer.status != 0 || answer.size < kDiscoverySize) {
        return std::nullopt;
    }
    DeviceRecord record;
    std::array<char, 20> text{};
    const std::uint8_t* const mac = answer.payload + kHardwareAddressAt;
    static_cast<void>(std::snprintf(text.data(), text.size(), "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2],
                                    mac[3], mac[4], mac[5]));
    record.hardwareAddress = text.data();
    record.address = addressTextOf(answer.payload + kAddressAt);
    record.mask = addressTextOf(answer.payload + kMaskAt);
    record.gateway = addressTextOf(answer.payload + kGatewayAt);
    record.supportedConfigurations = readBig32(answer.payload + kSupportedConfigurationsAt);
    record.enabledConfigurations = readBig32(answer.payload + kEnabledConfigurationsAt);
    record.vendor = textOf(answer, kVendor);
    record.model = textOf(answer, kModel);
    record.version = textOf(answer, kVersion);
    record.serialNumber = textOf(answer, kSerialNumber);
    record.userName = textOf(answer, kUserName);
    return record;
}

} // namespace GenICamAdapter::Gvcp
