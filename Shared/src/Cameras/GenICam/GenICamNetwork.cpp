// SPDX-License-Identifier: Apache-2.0

#include "Cameras/GenICamNetwork.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "Cameras/GenICam/GenICamLibrary.h"
#include "Cameras/GenICam/GenICamPlug.h"
#include "Cameras/GenICam/Ipv4.h"
#include "Exceptions/Raise.h"

namespace CameraInterface::GenICam {

using namespace KestrelExceptions;

namespace {

constexpr std::uint32_t kSmallestPacket = 220;
constexpr std::uint32_t kLargestPacket = 16384;
constexpr std::uint64_t kLongestDelayNs = 100000000;
constexpr std::uint32_t kShortestTimeoutMs = 500;
constexpr std::uint32_t kLongestTimeoutMs = 3600000;
/// Bytes that Ethernet adds to a packet: header 14, checksum 4, preamble 8, gap 12.
constexpr std::uint64_t kBytesOnWire = 38;

void require(bool condition, const std::string& argument) {
    if (!condition) {
        raise<KestrelException_InvalidArgument>(QUILL_HERE, Errors::kArgumentUnhandled, argument);
    }
}

void requirePlace(const NetworkPlace& place) {
    const auto mask = Ipv4::parse(place.mask);
    require(mask && Ipv4::isMask(*mask), place.mask);
    const auto address = Ipv4::parse(place.address);
    require(address && Ipv4::isOfDevice(*address, *mask), place.address);
    const auto gateway = Ipv4::parse(place.gateway);
    require(gateway && (*gateway == 0 || ((*gateway ^ *address) & *mask) == 0), place.gateway);
}

} // namespace

const char* getOriginName(AddressOrigin origin) {
    constexpr std::array kNames{"persistent", "DHCP", "link-local", "temporary"};
    return kNames.at(static_cast<std::size_t>(origin));
}

const char* getVerdictName(LinkVerdict verdict) {
    constexpr std::array kNames{"good", "hint", "fault"};
    return kNames.at(static_cast<std::size_t>(verdict));
}

CameraNetwork describeNetwork(const std::string& serialNumber) {
    return requirePlug().describeNetwork(getSettings(), serialNumber);
}

void setPersistentAddress(const std::string& serialNumber, const NetworkPlace& place) {
    requirePlace(place);
    requirePlug().setPersistentAddress(getSettings(), serialNumber, place);
}

void setAddressMode(const std::string& serialNumber, bool persistent, bool dhcp) {
    requirePlug().setAddressMode(getSettings(), serialNumber, persistent, dhcp);
}

std::uint32_t setPacketSize(const std::string& serialNumber, std::uint32_t bytes) {
    require(bytes >= kSmallestPacket && bytes <= kLargestPacket, std::to_string(bytes));
    return requirePlug().setPacketSize(getSettings(), serialNumber, bytes);
}

std::uint64_t setPacketDelayNs(const std::string& serialNumber, std::uint64_t nanoseconds) {
    require(nanoseconds <= kLongestDelayNs, std::to_string(nanoseconds));
    return requirePlug().setPacketDelayNs(getSettings(), serialNumber, nanoseconds);
}

std::uint32_t setHeartbeatMs(const std::string& serialNumber, std::uint32_t milliseconds) {
    require(milliseconds >= kShortestTimeoutMs && milliseconds <= kLongestTimeoutMs, std::to_string(milliseconds));
    return requirePlug().setHeartbeatMs(getSettings(), serialNumber, milliseconds);
}

void forceAddress(const std::string& camera, const NetworkPlace& place) {
    requirePlace(place);
    requirePlug().forceAddress(getSettings(), camera, place);
}

std::vector<LinkFinding> examineLink(const std::string& serialNumber) {
    return requirePlug().examineLink(getSettings(), serialNumber);
}

std::uint64_t computePacketDelayNs(std::uint32_t cameras, std::uint32_t linkSpeedMbps, std::uint32_t packetSize,
                                   std::uint32_t cameraSpeedMbps) {
    require(cameras > 0, std::to_string(cameras));
    require(linkSpeedMbps > 0, std::to_string(linkSpeedMbps));
    if (cameras == 1) {
        return 0;
    }
    // In real numbers: exact for what networks have, and without a largest number of cameras.
    const double kilobits = static_cast<double>(packetSize + kBytesOnWire) * 8 * 1000;
    const double period = kilobits / linkSpeedMbps * cameras * 10 / 9;
    const double own = kilobits / (cameraSpeedMbps == 0 ? linkSpeedMbps : cameraSpeedMbps);
    return period <= own ? 0 : static_cast<std::uint64_t>(std::ceil(period - own));
}

} // namespace CameraInterface::GenICam
