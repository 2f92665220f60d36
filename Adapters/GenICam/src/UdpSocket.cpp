// SPDX-License-Identifier: Apache-2.0

#include "UdpSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace GenICamAdapter {

namespace {

sockaddr_in addressOf(const std::string& text, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    inet_pton(AF_INET, text.c_str(), &address.sin_addr);
    return address;
}

const sockaddr* generic(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

/// A packet with its peer and the card that it goes through, for the system's calls.
class CardMessage {
public:
    CardMessage(std::uint8_t* packet, std::size_t size) : m_Content{packet, size} {
        m_Message.msg_name = &peer;
        m_Message.msg_namelen = sizeof peer;
        m_Message.msg_iov = &m_Content;
        m_Message.msg_iovlen = 1;
        m_Message.msg_control = m_Control.data();
        m_Message.msg_controllen = m_Control.size();
    }
    CardMessage(const CardMessage&) = delete;
    CardMessage& operator=(const CardMessage&) = delete;
    ~CardMessage() = default;

    msghdr* get() { return &m_Message; }

    /// Lets the card decide the way, not the routing table.
    void setCard(unsigned index) {
        in_pktinfo info{};
        info.ipi_ifindex = static_cast<int>(index);
        cmsghdr* const header = CMSG_FIRSTHDR(&m_Message);
        header->cmsg_level = IPPROTO_IP;
        header->cmsg_type = IP_PKTINFO;
        header->cmsg_len = CMSG_LEN(sizeof info);
        std::memcpy(CMSG_DATA(header), &info, sizeof info);
    }
    /// The card of a packet that was received; 0 if the system does not say.
    unsigned card() {
        for (cmsghdr* header = CMSG_FIRSTHDR(&m_Message); header != nullptr; header = CMSG_NXTHDR(&m_Message, header)) {
            if (header->cmsg_level == IPPROTO_IP && header->cmsg_type == IP_PKTINFO) {
                in_pktinfo info{};
                std::memcpy(&info, CMSG_DATA(header), sizeof info);
                return static_cast<unsigned>(info.ipi_ifindex);
            }
        }
        return 0;
    }

    sockaddr_in peer{};

private:
    iovec m_Content;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(in_pktinfo))> m_Control{};
    msghdr m_Message{};
};

std::string textOfAddress(const in_addr& address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    inet_ntop(AF_INET, &address, text.data(), text.size());
    return text.data();
}

} // namespace

UdpSocket::UdpSocket() : m_Socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    if (m_Socket < 0) {
        throw std::system_error(errno, std::generic_category(), "socket");
    }
    const int on = 1;
    setsockopt(m_Socket, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    setsockopt(m_Socket, IPPROTO_IP, IP_PKTINFO, &on, sizeof on);
}

UdpSocket::~UdpSocket() {
    close(m_Socket);
}

void UdpSocket::connect(const std::string& address, std::uint16_t port) {
    const sockaddr_in peer = addressOf(address, port);
    if (::connect(m_Socket, generic(peer), sizeof peer) != 0) {
        throw std::system_error(errno, std::generic_category(), "connect");
    }
}

std::uint16_t UdpSocket::bind(const std::string& address, std::uint16_t port) {
    sockaddr_in own = addressOf(address, port);
    socklen_t size = sizeof own;
    if (::bind(m_Socket, generic(own), size) != 0 ||
        getsockname(m_Socket, reinterpret_cast<sockaddr*>(&own), &size) != 0) {
        throw std::system_error(errno, std::generic_category(), "bind");
    }
    return ntohs(own.sin_port);
}

std::string UdpSocket::localAddress() const {
    sockaddr_in own{};
    socklen_t size = sizeof own;
    getsockname(m_Socket, reinterpret_cast<sockaddr*>(&own), &size);
    return textOfAddress(own.sin_addr);
}

void UdpSocket::send(const std::vector<std::uint8_t>& packet) const {
    // The first call may only report that an earlier packet was refused.
    if (::send(m_Socket, packet.data(), packet.size(), MSG_NOSIGNAL) < 0) {
        ::send(m_Socket, packet.data(), packet.size(), MSG_NOSIGNAL);
    }
}

void UdpSocket::sendTo(const std::string& address, std::uint16_t port, const std::vector<std::uint8_t>& packet) const {
    const sockaddr_in peer = addressOf(address, port);
    sendto(m_Socket, packet.data(), packet.size(), MSG_NOSIGNAL, generic(peer), sizeof peer);
}

void UdpSocket::broadcast(unsigned cardIndex, std::uint16_t port, const std::vector<std::uint8_t>& packet) const {
    CardMessage message(const_cast<std::uint8_t*>(packet.data()), packet.size());
    message.peer = addressOf("255.255.255.255", port);
    message.setCard(cardIndex);
    sendmsg(m_Socket, message.get(), MSG_NOSIGNAL);
}

UdpSocket::Arrival UdpSocket::receive(std::vector<std::uint8_t>& buffer, std::chrono::steady_clock::time_point until,
                                      PacketSource& source) const {
    while (true) {
        CardMessage message(buffer.data(), buffer.size());
        const ssize_t size = recvmsg(m_Socket, message.get(), 0);
        if (size >= 0) {
            source = {static_cast<std::size_t>(size), textOfAddress(message.peer.sin_addr),
                      ntohs(message.peer.sin_port), message.card()};
            return Arrival::Packet;
        }
        if (errno == ECONNREFUSED) {
            return Arrival::Refused;
        }
        const auto left = until - std::chrono::steady_clock::now();
        if (left <= std::chrono::nanoseconds::zero()) {
            return Arrival::TimedOut;
        }
        const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(left).count();
        const timespec limit{static_cast<time_t>(nanoseconds / 1000000000),
                             static_cast<long>(nanoseconds % 1000000000)};
        pollfd wait{m_Socket, POLLIN, 0};
        ppoll(&wait, 1, &limit, nullptr);
    }
}

} // namespace GenICamAdapter
