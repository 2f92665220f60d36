// SPDX-License-Identifier: Apache-2.0

#include "Socket.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

namespace GenICamDevices {

namespace {

constexpr int kStreamBuffer = 16 << 20;
constexpr std::size_t kLargestDatagram = 2048; // longer ones are no requests, and cut

[[noreturn]] void raise(const std::string& what) {
    throw std::runtime_error(what + ": " + std::system_category().message(errno));
}

std::uint32_t addressOf(const sockaddr* address) {
    sockaddr_in internet{};
    std::memcpy(&internet, address, sizeof internet);
    return ntohl(internet.sin_addr.s_addr);
}

} // namespace

sockaddr_in socketAddress(const Peer& peer) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(peer.address);
    address.sin_port = htons(peer.port);
    return address;
}

Socket::Socket() : m_Descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    if (m_Descriptor < 0) {
        raise("No socket can be opened");
    }
}

Socket::Socket(Socket&& other) noexcept : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
    std::swap(m_Descriptor, other.m_Descriptor);
    return *this;
}

Socket::~Socket() {
    if (m_Descriptor >= 0) {
        close(m_Descriptor);
    }
}

Socket Socket::forRequests(std::uint32_t address) {
    Socket socket;
    socket.setOption(IPPROTO_IP, IP_PKTINFO, 1);
    socket.bindTo({address, kControlPort});
    return socket;
}

Socket Socket::forBroadcasts(std::uint32_t address) {
    Socket socket;
    socket.setOption(SOL_SOCKET, SO_REUSEADDR, 1);
    socket.setOption(IPPROTO_IP, IP_PKTINFO, 1);
    socket.bindTo({address, kControlPort});
    return socket;
}

Socket Socket::forStream(std::uint32_t address) {
    Socket socket;
    // Beyond the system's limit only with privileges; otherwise as large as possible.
    if (setsockopt(socket.m_Descriptor, SOL_SOCKET, SO_SNDBUFFORCE, &kStreamBuffer, sizeof kStreamBuffer) != 0) {
        socket.setOption(SOL_SOCKET, SO_SNDBUF, kStreamBuffer);
    }
    socket.bindTo({address, 0});
    return socket;
}

void Socket::setOption(int level, int name, int value) {
    if (setsockopt(m_Descriptor, level, name, &value, sizeof value) != 0) {
        raise("A socket cannot be set");
    }
}

void Socket::bindTo(const Peer& peer) {
    const sockaddr_in address = socketAddress(peer);
    if (bind(m_Descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const std::string place = formatAddress(peer.address) + " port " + std::to_string(peer.port);
        raise(errno == EADDRINUSE ? place + " is taken, choose another address or end the other camera"
                                  : place + " cannot be used, choose an address of this machine");
    }
}

std::uint16_t Socket::port() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(m_Descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

void Socket::setDoNotFragment(bool doNotFragment) {
    setOption(IPPROTO_IP, IP_MTU_DISCOVER, doNotFragment ? IP_PMTUDISC_DO : IP_PMTUDISC_DONT);
}

bool Socket::send(const Bytes& bytes, const Peer& to) {
    const sockaddr_in address = socketAddress(to);
    return sendto(m_Descriptor, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                  sizeof address) >= 0;
}

std::optional<Datagram> Socket::receive() {
    Datagram datagram;
    datagram.bytes.resize(kLargestDatagram);
    sockaddr_in from{};
    iovec part{datagram.bytes.data(), datagram.bytes.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(in_pktinfo))> control{};
    msghdr message{};
    message.msg_name = &from;
    message.msg_namelen = sizeof from;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t size = recvmsg(m_Descriptor, &message, MSG_DONTWAIT);
    if (size < 0) {
        return std::nullopt;
    }
    datagram.bytes.resize(static_cast<std::size_t>(size));
    datagram.from = {ntohl(from.sin_addr.s_addr), ntohs(from.sin_port)};
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr; header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level == IPPROTO_IP && header->cmsg_type == IP_PKTINFO) {
            in_pktinfo info{};
            std::memcpy(&info, CMSG_DATA(header), sizeof info);
            datagram.card = info.ipi_ifindex;
        }
    }
    return datagram;
}

std::vector<NetworkCard> networkCards() {
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) {
        raise("The network interfaces cannot be listed");
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(first, freeifaddrs);
    std::vector<NetworkCard> cards;
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET || entry->ifa_netmask == nullptr) {
            continue;
        }
        NetworkCard card;
        card.name = entry->ifa_name;
        card.index = static_cast<int>(if_nametoindex(entry->ifa_name));
        card.place.address = addressOf(entry->ifa_addr);
        card.place.mask = addressOf(entry->ifa_netmask);
        if ((entry->ifa_flags & IFF_BROADCAST) != 0 && entry->ifa_broadaddr != nullptr) {
            card.broadcast = addressOf(entry->ifa_broadaddr);
        }
        cards.push_back(card);
    }
    return cards;
}

std::optional<std::uint32_t> parseAddress(const std::string& text) {
    in_addr address{};
    return inet_pton(AF_INET, text.c_str(), &address) == 1 ? std::optional(ntohl(address.s_addr)) : std::nullopt;
}

std::string formatAddress(std::uint32_t address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    const in_addr internet{htonl(address)};
    return inet_ntop(AF_INET, &internet, text.data(), text.size());
}

} // namespace GenICamDevices
