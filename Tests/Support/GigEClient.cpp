// SPDX-License-Identifier: Apache-2.0

#include "Support/GigEClient.h"

#include <chrono>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Support/Event.h"

namespace TestSupport {

using namespace GenICamDevices;

namespace {

sockaddr_in loopback(const std::string& address, std::uint16_t port) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &place.sin_addr);
    return place;
}

int openSocket() {
    return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

Bytes receiveFrom(int descriptor) {
    pollfd waiting{descriptor, POLLIN, 0};
    Bytes bytes;
    if (poll(&waiting, 1, static_cast<int>(std::chrono::milliseconds(kLongEnough).count())) == 1) {
        bytes.resize(65536);
        bytes.resize(static_cast<std::size_t>(recv(descriptor, bytes.data(), bytes.size(), 0)));
    }
    return bytes;
}

} // namespace

Bytes gigeRequest(GigECommand command, std::uint16_t id, const Bytes& payload) {
    Bytes packet{kControlKey, kAnswerWanted};
    appendBigEndian(packet, 2, static_cast<std::uint16_t>(command));
    appendBigEndian(packet, 2, payload.size());
    appendBigEndian(packet, 2, id);
    packet.insert(packet.end(), payload.begin(), payload.end());
    return packet;
}

Bytes gigeWords(std::initializer_list<std::uint32_t> words) {
    Bytes bytes;
    for (const std::uint32_t word : words) {
        appendBigEndian(bytes, 4, word);
    }
    return bytes;
}

GigEStatus gigeStatus(const Bytes& answer) {
    return static_cast<GigEStatus>(bigEndian(answer.data(), 2));
}

GigEClient::GigEClient(const std::string& cameraAddress) : m_Control(openSocket()), m_Stream(openSocket()) {
    const sockaddr_in camera = loopback(cameraAddress, kControlPort);
    sockaddr_in own = loopback("127.0.0.1", 0);
    socklen_t size = sizeof own;
    EXPECT_EQ(connect(m_Control, reinterpret_cast<const sockaddr*>(&camera), sizeof camera), 0);
    EXPECT_EQ(bind(m_Stream, reinterpret_cast<const sockaddr*>(&own), sizeof own), 0);
    getsockname(m_Stream, reinterpret_cast<sockaddr*>(&own), &size);
    write(Address::kPrivilege, kControlAccess);
    write(Address::kStreamDestination, ntohl(own.sin_addr.s_addr));
    write(Address::kStreamPort, ntohs(own.sin_port));
}

GigEClient::~GigEClient() {
    close(m_Control);
    close(m_Stream);
}

void GigEClient::write(std::uint32_t address, std::uint32_t value) {
    send(GigECommand::WriteRegisters, gigeWords({address, value}));
    const Bytes answer = receiveFrom(m_Control);
    ASSERT_EQ(answer.size(), 12U);
    EXPECT_EQ(gigeStatus(answer), GigEStatus::Success) << std::hex << address;
}

void GigEClient::send(GigECommand command, const Bytes& payload) {
    const Bytes request = gigeRequest(command, ++m_Id, payload);
    EXPECT_EQ(::send(m_Control, request.data(), request.size(), 0), static_cast<ssize_t>(request.size()));
}

Bytes GigEClient::nextPacket() {
    Bytes packet = receiveFrom(m_Stream);
    EXPECT_GE(packet.size(), kControlHeaderSize);
    if (packet.size() >= kControlHeaderSize) {
        m_Packets[{bigEndian(&packet[2], 2), bigEndian(&packet[5], 3)}] = packet;
    }
    return packet;
}

Bytes GigEClient::payload(std::uint32_t blockId) const {
    Bytes bytes;
    for (auto it = m_Packets.lower_bound({blockId, 1}); it != m_Packets.end() && it->first.first == blockId; ++it) {
        if (it->second[4] == static_cast<std::uint8_t>(GigEPacket::Payload)) {
            bytes.insert(bytes.end(), it->second.begin() + kControlHeaderSize, it->second.end());
        }
    }
    return bytes;
}

} // namespace TestSupport
