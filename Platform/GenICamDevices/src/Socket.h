// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <netinet/in.h>

#include "GigEDevice.h"
#include "GigEWire.h"

namespace GenICamDevices {

sockaddr_in socketAddress(const Peer& peer);

/// A datagram that was received.
struct Datagram {
    Peer from;
    int card = 0; ///< index of the network interface that it came through
    Bytes bytes;
};

/// A UDP socket, which can be moved.
class Socket {
public:
    /// For requests to one address: nobody else can have it.
    /// @throws std::runtime_error  the address is none of this machine, or its port is in use
    static Socket forRequests(std::uint32_t address);
    /// For requests to a broadcast address, which all cameras of the machine receive.
    /// @throws std::runtime_error
    static Socket forBroadcasts(std::uint32_t address);
    /// For frames: large buffers, any port.
    /// @throws std::runtime_error  the address is none of this machine
    static Socket forStream(std::uint32_t address);

    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    ~Socket();

    int descriptor() const { return m_Descriptor; }
    std::uint16_t port() const;
    void setDoNotFragment(bool doNotFragment);
    bool send(const Bytes& bytes, const Peer& to);
    /// @return nothing: no datagram has come
    std::optional<Datagram> receive();

private:
    Socket();
    void bindTo(const Peer& peer);
    void setOption(int level, int name, int value);

    int m_Descriptor;
};

/// A network interface with an IPv4 address.
struct NetworkCard {
    std::string name;
    int index = 0;
    NetworkPlace place;          ///< without gateway
    std::uint32_t broadcast = 0; ///< 0: it has none
};

/// Those of this machine; one that has several addresses is there as often.
/// @throws std::runtime_error
std::vector<NetworkCard> networkCards();

/// @return nothing: the text is no IPv4 address
std::optional<std::uint32_t> parseAddress(const std::string& text);
std::string formatAddress(std::uint32_t address);

} // namespace GenICamDevices
