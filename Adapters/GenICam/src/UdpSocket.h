// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace GenICamAdapter {

/// Where a packet came from: addresses as texts.
struct PacketSource {
    std::size_t size = 0; ///< bytes of the packet
    std::string address;
    std::uint16_t port = 0;
    unsigned cardIndex = 0;
};

/// An IPv4 UDP socket on any free port of this computer. Not thread-safe.
class UdpSocket {
public:
    /// @throws std::system_error
    UdpSocket();
    UdpSocket(const UdpSocket&) = delete;
    UdpSocket& operator=(const UdpSocket&) = delete;
    ~UdpSocket();

    /// Selects the only peer. @throws std::system_error  no route leads there
    void connect(const std::string& address, std::uint16_t port);
    /// Takes a port of one of this computer's addresses, or any free one, for packets from anybody.
    /// @return the port
    /// @throws std::system_error
    std::uint16_t bind(const std::string& address = "0.0.0.0", std::uint16_t port = 0);
    /// This computer's address on the way to the peer.
    std::string localAddress() const;

    // A packet that cannot be sent is lost, like any other.

    void send(const std::vector<std::uint8_t>& packet) const;
    void sendTo(const std::string& address, std::uint16_t port, const std::vector<std::uint8_t>& packet) const;
    /// Sends to everybody on the network of one card.
    void broadcast(unsigned cardIndex, std::uint16_t port, const std::vector<std::uint8_t>& packet) const;

    /// How a wait for a packet ended.
    enum class Arrival { Packet, TimedOut, Refused };
    /// Waits for a packet; @p buffer keeps its size.
    Arrival receive(std::vector<std::uint8_t>& buffer, std::chrono::steady_clock::time_point until,
                    PacketSource& source) const;

private:
    int m_Socket;
};

} // namespace GenICamAdapter
