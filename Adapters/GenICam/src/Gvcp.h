// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// The control protocol of GigE Vision (GVCP): the packets, without the sockets.
namespace GenICamAdapter::Gvcp {

constexpr std::uint16_t kPort = 3956;
/// The most bytes that one packet reads or writes, of the 540 that the protocol allows after the header.
constexpr std::size_t kMostBytes = 512;
/// Larger than any control packet.
constexpr std::size_t kPacketSize = 600;

enum class Command : std::uint16_t {
    Discovery = 0x0002,
    ForceAddress = 0x0004,
    ReadRegister = 0x0080,
    WriteRegister = 0x0082,
    ReadMemory = 0x0084,
    WriteMemory = 0x0086,
};

/// Addresses of the standard registers.
namespace Registers {
constexpr std::uint32_t kDeviceMode = 0x0004;
constexpr std::uint32_t kFirstUrl = 0x0200; // of the description
constexpr std::uint32_t kSecondUrl = 0x0400;
constexpr std::uint32_t kEnabledConfigurations = 0x0014;
constexpr std::uint32_t kPersistentAddress = 0x064C;
constexpr std::uint32_t kPersistentMask = 0x065C;
constexpr std::uint32_t kPersistentGateway = 0x066C;
constexpr std::uint32_t kLinkSpeed = 0x0670; // in megabits per second
constexpr std::uint32_t kCapabilities = 0x0934;
constexpr std::uint32_t kTickFrequencyHigh = 0x093C;
constexpr std::uint32_t kTickFrequencyLow = 0x0940;
constexpr std::uint32_t kHeartbeatTimeout = 0x0938; // in milliseconds
constexpr std::uint32_t kControl = 0x0A00;          // who may write
constexpr std::uint32_t kControllerPort = 0x0A04;
constexpr std::uint32_t kControllerAddress = 0x0A14;
constexpr std::uint32_t kStreamPort = 0x0D00;        // of the receiver; 0 while there is none
constexpr std::uint32_t kPacketSize = 0x0D04;        // of the stream, with its headers
constexpr std::uint32_t kPacketDelay = 0x0D08;       // in ticks
constexpr std::uint32_t kStreamDestination = 0x0D18; // the receiver's address
} // namespace Registers

// Ways to an address, as the registers of configurations have them.
constexpr std::uint32_t kPersistentConfiguration = 1U << 0;
constexpr std::uint32_t kDhcpConfiguration = 1U << 1;
constexpr std::uint32_t kLinkLocalConfiguration = 1U << 2;

/// The capability to tell the speed of the link.
constexpr std::uint32_t kTellsLinkSpeed = 1U << 28;

// Bits of the register of the packet size, beside the 16 of the size.
constexpr std::uint32_t kSizeOfPacket = 0xFFFF;
constexpr std::uint32_t kSendTestPacket = 1U << 31;
constexpr std::uint32_t kDoNotFragment = 1U << 30;

constexpr std::uint32_t kExclusiveAccess = 1U << 0;
constexpr std::uint32_t kControlAccess = 1U << 1;

using Packet = std::vector<std::uint8_t>;

Packet makeDiscovery(std::uint16_t id);
/// Gives a device the address until it restarts; everybody else ignores it.
/// @param hardwareAddress  its lower 48 bits
Packet makeForceAddress(std::uint16_t id, std::uint64_t hardwareAddress, std::uint32_t address, std::uint32_t mask,
                        std::uint32_t gateway);
Packet makeReadRegister(std::uint16_t id, std::uint32_t address);
Packet makeWriteRegister(std::uint16_t id, std::uint32_t address, std::uint32_t value);
/// @param bytes a multiple of 4, at most kMostBytes
Packet makeReadMemory(std::uint16_t id, std::uint32_t address, std::uint16_t bytes);
/// @param bytes the number of bytes, as above
Packet makeWriteMemory(std::uint16_t id, std::uint32_t address, const std::uint8_t* data, std::size_t bytes);

/// Says that a command was done, as a camera does.
Packet makeAnswer(std::uint16_t id, Command command, const Packet& payload, std::uint16_t status = 0);

/// An answer; the payload lies in the packet. A command has the same fields, but for its status.
struct Answer {
    std::uint16_t status = 0; ///< 0 if the camera did what it was asked
    std::uint16_t kind = 0;   ///< the command plus one, or kPending
    std::uint16_t id = 0;
    const std::uint8_t* payload = nullptr;
    std::size_t size = 0;
};

/// The camera needs the time, in milliseconds, that the last two bytes of the payload give.
constexpr std::uint16_t kPending = 0x0089;
constexpr std::uint16_t kAccessDenied = 0x8006;
constexpr std::uint16_t kBusy = 0x8007;

std::optional<Answer> parseAnswer(const std::uint8_t* packet, std::size_t size);
/// What an answer is to the command that was sent.
enum class Match { Ours, Pending, Foreign };
Match matchOf(const Answer& answer, std::uint16_t id, Command command);
/// The time that a pending answer asks for, in milliseconds.
std::uint16_t pendingMsOf(const Answer& answer);
/// The bytes of an answer to a reading of memory; null if they are fewer.
const std::uint8_t* memoryOf(const Answer& answer, std::size_t bytes);

/// The bytes of a URL register.
constexpr std::size_t kUrlSize = 512;
/// Where in a camera's memory its description lies.
struct DescriptionPlace {
    std::uint32_t address = 0;
    std::uint64_t size = 0;
};
/// What the URL of a description in the camera itself says ("Local:NAME;ADDRESS;SIZE", the numbers hexadecimal);
/// nothing for any other URL.
std::optional<DescriptionPlace> placeOfDescription(const std::string& url);

/// The name that the protocol gives a status, such as "access denied".
std::string nameOfStatus(std::uint16_t status);

void appendBig32(Packet& packet, std::uint32_t value);
std::uint16_t readBig16(const std::uint8_t* bytes);
std::uint32_t readBig32(const std::uint8_t* bytes);

/// What a camera says of itself, whoever asks.
struct DeviceRecord {
    std::string hardwareAddress; ///< "00:11:22:33:44:55"
    std::string address;         ///< of the camera
    std::string vendor;
    std::string model;
    std::string version;
    std::string serialNumber;
    std::string userName;
    std::string mask;
    std::string gateway;
    std::uint32_t supportedConfigurations = 0; ///< ways to an address
    std::uint32_t enabledConfigurations = 0;
};

/// Reads the payload of an answer to a discovery; nothing if it is too short. Texts lose what is not printable.
std::optional<DeviceRecord> parseDiscovery(const Answer& answer);

} // namespace GenICamAdapter::Gvcp
