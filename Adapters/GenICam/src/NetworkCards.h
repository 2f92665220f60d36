// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace GenICamAdapter {

/// An address with the mask of its network.
struct CardAddress {
    std::uint32_t address = 0;
    std::uint32_t mask = 0;

    bool isInNetwork(std::uint32_t other) const { return ((address ^ other) & mask) == 0; }
    /// Such as "192.168.1.10/24".
    std::string text() const;
};

/// A network card of this computer.
struct NetworkCard {
    std::string name;
    std::vector<CardAddress> addresses;
    bool isUp = false;
    bool hasLink = false;

    // Known after addLimits().
    std::uint32_t mtu = 0;                  ///< bytes of the largest packet
    std::optional<std::uint32_t> speedMbps; ///< nothing if the card has no speed, or no link
    int reversePathFilter = 0;              ///< 1 drops packets whose sender is reached over another card

    /// The address whose network has the other one, or null.
    const CardAddress* addressFor(std::uint32_t other) const;
};

/// The cards of this computer, those without an address too.
std::vector<NetworkCard> networkCards();

/// Asks the system what a card lets through.
void addLimits(NetworkCard& card);

/// The way on which packets to an address leave.
struct Route {
    std::string card;       ///< empty if there is no way
    std::uint32_t from = 0; ///< this computer's address
};
Route routeTo(std::uint32_t address, const std::vector<NetworkCard>& cards);

/// Whether a card reaches an address by a route of its own, without a gateway.
bool isRoutedOnCard(const std::string& card, std::uint32_t address);

/// Reads a table of routes as the kernel prints it; see above.
bool hasDirectRoute(const std::string& table, const std::string& card, std::uint32_t address);

} // namespace GenICamAdapter
