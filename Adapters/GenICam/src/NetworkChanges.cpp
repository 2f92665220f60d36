// SPDX-License-Identifier: Apache-2.0

#include "NetworkChanges.h"

#include <limits>
#include <stdexcept>
#include <string>

#include "Cameras/GenICam/Ipv4.h"
#include "Gvcp.h"
#include "NetworkDescription.h"

namespace GenICamAdapter {

using namespace CameraInterface::GenICam;

namespace {

constexpr const char* kNoPersistentAddress = "The camera can keep no persistent address.";

void requireDone(const ControlChannel::Result& result) {
    if (!result) {
        throw std::runtime_error(result.text());
    }
}

std::uint32_t requireRegister(ControlChannel& channel, std::uint32_t address) {
    std::uint32_t value = 0;
    requireDone(channel.readRegister(address, value));
    return value;
}

void requireSupport(std::uint32_t supported, std::uint32_t wanted, const char* refusal) {
    if ((wanted & ~supported) != 0) {
        throw std::runtime_error(refusal);
    }
}

/// @return what the camera took
std::uint32_t writeAndRead(ControlChannel& channel, std::uint32_t address, std::uint32_t value) {
    requireDone(channel.writeRegister(address, value));
    return requireRegister(channel, address);
}

void writeAddress(ControlChannel& channel, std::uint32_t address, const std::string& text) {
    const std::uint32_t taken = writeAndRead(channel, address, Ipv4::parse(text).value_or(0));
    if (Ipv4::format(taken) != text) {
        throw std::runtime_error("The camera takes " + Ipv4::format(taken) + " instead of " + text + ".");
    }
}

} // namespace

void storeAddress(ControlChannel& channel, std::uint32_t supportedConfigurations, const NetworkPlace& place) {
    requireSupport(supportedConfigurations, Gvcp::kPersistentConfiguration, kNoPersistentAddress);
    writeAddress(channel, Gvcp::Registers::kPersistentAddress, place.address);
    writeAddress(channel, Gvcp::Registers::kPersistentMask, place.mask);
    writeAddress(channel, Gvcp::Registers::kPersistentGateway, place.gateway);
}

void storeAddressMode(ControlChannel& channel, std::uint32_t supportedConfigurations, bool persistent, bool dhcp) {
    // A link-local address is the last resort of every camera.
    const std::uint32_t wanted = Gvcp::kLinkLocalConfiguration | (persistent ? Gvcp::kPersistentConfiguration : 0U) |
                                 (dhcp ? Gvcp::kDhcpConfiguration : 0U);
    requireSupport(supportedConfigurations, wanted & Gvcp::kPersistentConfiguration, kNoPersistentAddress);
    requireSupport(supportedConfigurations, wanted & Gvcp::kDhcpConfiguration,
                   "The camera cannot get its address by DHCP.");
    const std::uint32_t taken = writeAndRead(channel, Gvcp::Registers::kEnabledConfigurations, wanted);
    if (((taken ^ wanted) & (Gvcp::kPersistentConfiguration | Gvcp::kDhcpConfiguration)) != 0) {
        throw std::runtime_error("The camera keeps another way to its address.");
    }
}

std::uint32_t writePacketSize(ControlChannel& channel, std::uint32_t bytes) {
    const std::uint32_t others = requireRegister(channel, Gvcp::Registers::kPacketSize) & Gvcp::kDoNotFragment;
    return writeAndRead(channel, Gvcp::Registers::kPacketSize, others | bytes) & Gvcp::kSizeOfPacket;
}

std::uint64_t writePacketDelay(ControlChannel& channel, std::uint64_t nanoseconds) {
    const std::uint64_t frequency = tickFrequencyOf(channel);
    if (frequency == 0) {
        throw std::runtime_error("The camera does not say how fast its clock runs.");
    }
    const std::uint64_t ticks = ticksOf(nanoseconds, frequency);
    if (ticks > std::numeric_limits<std::uint32_t>::max()) {
        throw std::runtime_error("The pause is too long for the camera's clock.");
    }
    const std::uint32_t taken = writeAndRead(channel, Gvcp::Registers::kPacketDelay, static_cast<std::uint32_t>(ticks));
    return nanosecondsOf(taken, frequency);
}

std::uint32_t writeHeartbeat(ControlChannel& channel, std::uint32_t milliseconds) {
    return writeAndRead(channel, Gvcp::Registers::kHeartbeatTimeout, milliseconds);
}

} // namespace GenICamAdapter
