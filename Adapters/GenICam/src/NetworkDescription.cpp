// SPDX-License-Identifier: Apache-2.0

#include "NetworkDescription.h"

#include <optional>
#include <string>

#include "Cameras/GenICam/Ipv4.h"
#include "Gvcp.h"

namespace GenICamAdapter {

using namespace CameraInterface::GenICam;

namespace {

constexpr std::uint64_t kNanoseconds = 1000000000;

std::optional<std::uint32_t> registerOf(ControlChannel& channel, std::uint32_t address) {
    std::uint32_t value = 0;
    return channel.readRegister(address, value) ? std::optional(value) : std::nullopt;
}

std::optional<NetworkPlace> persistentPlaceOf(ControlChannel& channel) {
    const auto address = registerOf(channel, Gvcp::Registers::kPersistentAddress);
    const auto mask = registerOf(channel, Gvcp::Registers::kPersistentMask);
    const auto gateway = registerOf(channel, Gvcp::Registers::kPersistentGateway);
    if (!address || !mask || !gateway) {
        return std::nullopt;
    }
    return NetworkPlace{Ipv4::format(*address), Ipv4::format(*mask), Ipv4::format(*gateway)};
}

void addController(CameraNetwork& network, ControlChannel& channel, std::uint32_t access, bool isControlledHere) {
    const bool isControlled = (access & (Gvcp::kControlAccess | Gvcp::kExclusiveAccess)) != 0;
    network.controller = !isControlled      ? Controller::Nobody
                         : isControlledHere ? Controller::ThisProgram
                                            : Controller::AnotherProgram;
    const auto address = registerOf(channel, Gvcp::Registers::kControllerAddress);
    if (isControlled && address.value_or(0) != 0) {
        network.controllerAddress = Ipv4::format(*address);
    }
}

} // namespace

CameraNetwork describeFromOutside(const FoundCamera& camera, const CameraReach& reach) {
    CameraNetwork network;
    network.hardwareAddress = camera.record.hardwareAddress;
    network.present = {camera.record.address, camera.record.mask, camera.record.gateway};
    const std::uint32_t supported = camera.record.supportedConfigurations;
    const std::uint32_t enabled = camera.record.enabledConfigurations;
    network.isPersistentSupported = (supported & Gvcp::kPersistentConfiguration) != 0;
    network.isPersistentEnabled = (enabled & Gvcp::kPersistentConfiguration) != 0;
    network.isDhcpSupported = (supported & Gvcp::kDhcpConfiguration) != 0;
    network.isDhcpEnabled = (enabled & Gvcp::kDhcpConfiguration) != 0;
    network.origin = originOf(Ipv4::parse(camera.record.address).value_or(0), enabled, 0);
    network.obstacle = reach.obstacle;
    if (reach.card) {
        network.card = reach.card->name;
        network.cardSpeedMbps = reach.card->speedMbps;
    }
    if (reach.own.address != 0) {
        network.cardAddress = Ipv4::format(reach.own.address);
        network.cardMask = Ipv4::format(reach.own.mask);
    }
    return network;
}

void addRegisters(CameraNetwork& network, ControlChannel& channel, bool isControlledHere) {
    std::uint32_t access = 0;
    if (const auto result = channel.readRegister(Gvcp::Registers::kControl, access); !result) {
        network.obstacle = result.status == Gvcp::kAccessDenied
                               ? "Another program has exclusive access: nobody else reads its registers."
                               : result.text();
        return;
    }
    addController(network, channel, access, isControlledHere);
    const std::uint32_t enabled = registerOf(channel, Gvcp::Registers::kEnabledConfigurations).value_or(0);
    network.isPersistentEnabled = (enabled & Gvcp::kPersistentConfiguration) != 0;
    network.isDhcpEnabled = (enabled & Gvcp::kDhcpConfiguration) != 0;
    network.persistent = persistentPlaceOf(channel);
    const std::uint32_t stored = network.persistent ? Ipv4::parse(network.persistent->address).value_or(0) : 0;
    network.origin = originOf(Ipv4::parse(network.present.address).value_or(0), enabled, stored);
    const std::uint32_t capabilities = registerOf(channel, Gvcp::Registers::kCapabilities).value_or(0);
    if ((capabilities & Gvcp::kTellsLinkSpeed) != 0) {
        network.linkSpeedMbps = registerOf(channel, Gvcp::Registers::kLinkSpeed);
    }
    if (const auto size = registerOf(channel, Gvcp::Registers::kPacketSize)) {
        network.packetSize = *size & Gvcp::kSizeOfPacket;
    }
    const std::uint64_t frequency = tickFrequencyOf(channel);
    if (const auto delay = registerOf(channel, Gvcp::Registers::kPacketDelay); delay && frequency != 0) {
        network.packetDelayNs = nanosecondsOf(*delay, frequency);
    }
    network.heartbeatMs = registerOf(channel, Gvcp::Registers::kHeartbeatTimeout);
}

AddressOrigin originOf(std::uint32_t address, std::uint32_t enabledConfigurations, std::uint32_t persistent) {
    if ((enabledConfigurations & Gvcp::kPersistentConfiguration) != 0 && persistent != 0 && address == persistent) {
        return AddressOrigin::Persistent;
    }
    if (Ipv4::isLinkLocal(address)) {
        return AddressOrigin::LinkLocal;
    }
    const bool isFromServer = (enabledConfigurations & Gvcp::kDhcpConfiguration) != 0 &&
                              ((enabledConfigurations & Gvcp::kPersistentConfiguration) == 0 || persistent == 0);
    return isFromServer ? AddressOrigin::Dhcp : AddressOrigin::Temporary;
}

std::uint64_t tickFrequencyOf(ControlChannel& channel) {
    const std::uint64_t high = registerOf(channel, Gvcp::Registers::kTickFrequencyHigh).value_or(0);
    return high << 32 | registerOf(channel, Gvcp::Registers::kTickFrequencyLow).value_or(0);
}

std::uint64_t nanosecondsOf(std::uint64_t ticks, std::uint64_t frequency) {
    return ticks * kNanoseconds / frequency;
}

std::uint64_t ticksOf(std::uint64_t nanoseconds, std::uint64_t frequency) {
    const std::uint64_t seconds = nanoseconds / kNanoseconds;
    return seconds * frequency + (nanoseconds % kNanoseconds * frequency + kNanoseconds - 1) / kNanoseconds;
}

} // namespace GenICamAdapter
