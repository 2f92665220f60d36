// SPDX-License-Identifier: Apache-2.0

#include "CameraReach.h"

#include <algorithm>
#include <stdexcept>

#include "Cameras/GenICam/Ipv4.h"

namespace GenICamAdapter {

using namespace CameraInterface::GenICam;

namespace {

/// An address of a network for a device: with the device's own number if that is free.
std::uint32_t addressInNetwork(const CardAddress& network, std::uint32_t number) {
    const std::uint32_t hosts = ~network.mask;
    for (std::uint32_t tries = 0; tries <= hosts; ++tries, ++number) {
        const std::uint32_t address = (network.address & network.mask) | (number & hosts);
        if (Ipv4::isOfDevice(address, network.mask) && address != network.address) {
            return address;
        }
    }
    return network.address; // of a network for one device
}

std::string withMask(std::uint32_t address, std::uint32_t mask) {
    return CardAddress{address, mask}.text();
}

CameraReach reachOverPresentCards(const FoundCamera& camera) {
    const std::vector<NetworkCard> cards = networkCards();
    const std::uint32_t address = Ipv4::parse(camera.record.address).value_or(0);
    return reachOf(camera, cards, routeTo(address, cards), isRoutedOnCard(camera.card, address));
}

} // namespace

CameraReach reachOf(const FoundCamera& camera) {
    CameraReach reach = reachOverPresentCards(camera);
    if (reach.card) {
        addLimits(*reach.card);
    }
    return reach;
}

CameraReach reachOf(const FoundCamera& camera, const std::vector<NetworkCard>& cards, const Route& route,
                    bool isDirect) {
    CameraReach reach;
    reach.routeCard = route.card;
    const std::string& name = camera.card.empty() ? route.card : camera.card;
    const auto place =
        std::find_if(cards.begin(), cards.end(), [&name](const NetworkCard& card) { return card.name == name; });
    if (place == cards.end()) {
        return reach;
    }
    const NetworkCard& card = reach.card.emplace(*place);
    const std::uint32_t address = Ipv4::parse(camera.record.address).value_or(0);
    if (const CardAddress* own = card.addressFor(address)) {
        reach.own = *own;
        return reach;
    }
    if (!card.addresses.empty()) {
        reach.own = card.addresses.front();
        for (const CardAddress& own : card.addresses) {
            reach.own = own.address == route.from ? own : reach.own;
        }
    }
    // A camera that answered a broadcast is on the card's network, where no gateway leads.
    if (camera.card.empty() || isDirect) {
        return reach;
    }
    if (card.addresses.empty()) {
        const std::uint32_t mask = Ipv4::parse(camera.record.mask).value_or(0);
        reach.obstacle = card.name + " has no IPv4 address.";
        reach.remedy =
            Ipv4::isMask(mask)
                ? "sudo ip address add " + withMask(addressInNetwork({address, mask}, 1), mask) + " dev " + card.name
                : "";
        return reach;
    }
    reach.obstacle = "Its address " + camera.record.address + " is not on the network of " + card.name + " (" +
                     reach.own.text() + ").";
    reach.remedy = "quill network " + camera.serialNumber + " --force " +
                   withMask(addressInNetwork(reach.own, address), reach.own.mask);
    return reach;
}

void requireReachable(const FoundCamera& camera) {
    if (camera.card.empty()) {
        return; // found by its address, over whatever way there is
    }
    const CameraReach reach = reachOverPresentCards(camera);
    if (!reach.obstacle.empty()) {
        throw std::runtime_error(reach.obstacle + (reach.remedy.empty() ? "" : " This helps: " + reach.remedy));
    }
}

} // namespace GenICamAdapter
