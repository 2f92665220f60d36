// SPDX-License-Identifier: Apache-2.0

#include "ForcedAddress.h"

#include <net/if.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstddef>

#include "Cameras/GenICam/Ipv4.h"
#include "Gvcp.h"
#include "UdpSocket.h"

namespace GenICamAdapter {

using namespace CameraInterface::GenICam;
using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPatienceWithMove = 10s;
/// The command is repeated, and the camera asked at its new address, at this interval.
constexpr auto kPauseBetweenOrders = 250ms;
/// A camera that moves need not answer; one that did not get the command must get it again.
constexpr int kMostOrders = 4;
constexpr std::uint16_t kOrderId = 0x5155;
constexpr std::uint16_t kQuestionId = 0x5156;

} // namespace

std::optional<std::uint64_t> parseHardwareAddress(const std::string& text) {
    constexpr std::size_t kLength = 17;
    if (text.size() != kLength) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < kLength; ++i) {
        const char c = text[i];
        if (i % 3 == 2) {
            if (c != ':' && c != '-') {
                return std::nullopt;
            }
            continue;
        }
        if (std::isxdigit(static_cast<unsigned char>(c)) == 0) {
            return std::nullopt;
        }
        number = number << 4 | static_cast<std::uint64_t>(c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10);
    }
    return number;
}

ForcedResult forceOnCards(std::uint64_t hardwareAddress, const NetworkPlace& place,
                          const std::vector<std::string>& cards, const std::string& presentAddress) {
    const UdpSocket socket;
    const Gvcp::Packet order =
        Gvcp::makeForceAddress(kOrderId, hardwareAddress, Ipv4::parse(place.address).value_or(0),
                               Ipv4::parse(place.mask).value_or(0), Ipv4::parse(place.gateway).value_or(0));
    const Gvcp::Packet question = Gvcp::makeDiscovery(kQuestionId);
    const auto sendToAll = [&](const Gvcp::Packet& packet, const std::string& address) {
        for (const std::string& card : cards) {
            if (const unsigned index = if_nametoindex(card.c_str())) {
                socket.broadcast(index, Gvcp::kPort, packet);
            }
        }
        if (!address.empty()) {
            socket.sendTo(address, Gvcp::kPort, packet);
        }
    };
    std::vector<std::uint8_t> buffer(Gvcp::kPacketSize);
    PacketSource source;
    const Clock::time_point end = Clock::now() + kPatienceWithMove;
    for (int orders = 0; Clock::now() < end; ++orders) {
        if (orders < kMostOrders) {
            sendToAll(order, presentAddress);
        }
        sendToAll(question, place.address);
        const Clock::time_point next = std::min(Clock::now() + kPauseBetweenOrders, end);
        while (Clock::now() < next) {
            if (socket.receive(buffer, next, source) != UdpSocket::Arrival::Packet) {
                continue;
            }
            const auto answer = Gvcp::parseAnswer(buffer.data(), std::min(source.size, buffer.size()));
            if (answer && answer->id == kOrderId && answer->status != 0) {
                return {false, Gvcp::nameOfStatus(answer->status)};
            }
            const auto record = answer && answer->id == kQuestionId ? Gvcp::parseDiscovery(*answer) : std::nullopt;
            if (record && parseHardwareAddress(record->hardwareAddress) == hardwareAddress &&
                record->address == place.address && record->mask == place.mask) {
                return {true, ""};
            }
        }
    }
    return {};
}

} // namespace GenICamAdapter
