// SPDX-License-Identifier: Apache-2.0

#include "LinkExamination.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <vector>

#include "Cameras/GenICam/Ipv4.h"
#include "Gvcp.h"
#include "UdpSocket.h"

namespace GenICamAdapter {

using namespace CameraInterface::GenICam;
using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRoundTrips = 20;
constexpr auto kPatienceWithAnswer = 500ms;
/// After so many lost ones in a row the camera is taken for silent.
constexpr int kMostLostInARow = 5;
constexpr auto kPatienceWithTestPacket = 300ms;
constexpr int kTestPacketsPerSize = 3;
constexpr std::array<std::uint32_t, 3> kTestSizes{576, 1500, 9000};
constexpr std::uint32_t kLargestAskedFor = 9000;
/// Of IP and UDP; the size of a stream's packet includes them.
constexpr std::size_t kHeadersOfPacket = 28;
constexpr int kWantedBuffer = 32 << 20;

/// A descriptor of a socket, or none.
class SocketOwner {
public:
    explicit SocketOwner(int descriptor) : m_Descriptor(descriptor) {}
    SocketOwner(const SocketOwner&) = delete;
    SocketOwner& operator=(const SocketOwner&) = delete;
    ~SocketOwner() {
        if (m_Descriptor >= 0) {
            close(m_Descriptor);
        }
    }
    int get() const { return m_Descriptor; }

private:
    int m_Descriptor;
};

std::size_t largestReceiveBuffer() {
    const SocketOwner probe(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    int size = kWantedBuffer;
    socklen_t length = sizeof size;
    setsockopt(probe.get(), SOL_SOCKET, SO_RCVBUF, &size, length);
    if (getsockopt(probe.get(), SOL_SOCKET, SO_RCVBUF, &size, &length) != 0) {
        return 0;
    }
    return static_cast<std::size_t>(size) / 2; // the kernel doubles it for what it keeps of each packet
}

/// The registers of a stream, which get their values back at the end.
class StreamRegisters {
public:
    explicit StreamRegisters(ControlChannel& channel) : m_Channel(channel) {
        m_IsRead = channel.readRegister(Gvcp::Registers::kStreamPort, m_Port) &&
                   channel.readRegister(Gvcp::Registers::kPacketSize, m_Size) &&
                   channel.readRegister(Gvcp::Registers::kStreamDestination, m_Destination);
    }
    StreamRegisters(const StreamRegisters&) = delete;
    StreamRegisters& operator=(const StreamRegisters&) = delete;
    ~StreamRegisters() {
        if (m_IsOpen) {
            m_Channel.writeRegister(Gvcp::Registers::kPacketSize, m_Size & ~Gvcp::kSendTestPacket);
            m_Channel.writeRegister(Gvcp::Registers::kStreamPort, m_Port);
            m_Channel.writeRegister(Gvcp::Registers::kStreamDestination, m_Destination);
        }
    }

    bool isRead() const { return m_IsRead; }
    bool isStreaming() const { return (m_Port & 0xFFFF) != 0; }
    std::uint32_t packetSize() const { return m_Size & Gvcp::kSizeOfPacket; }

    /// @return what the camera says if it refuses
    ControlChannel::Result open(std::uint32_t address, std::uint16_t port) {
        m_IsOpen = true;
        const auto result = m_Channel.writeRegister(Gvcp::Registers::kStreamDestination, address);
        return result ? m_Channel.writeRegister(Gvcp::Registers::kStreamPort, port) : result;
    }

    /// The size that the camera takes instead of a larger one; 0 if it refuses.
    std::uint32_t tryPacketSize(std::uint32_t bytes) {
        m_IsOpen = true;
        std::uint32_t taken = 0;
        const bool isTaken = m_Channel.writeRegister(Gvcp::Registers::kPacketSize, bytes) &&
                             m_Channel.readRegister(Gvcp::Registers::kPacketSize, taken);
        return isTaken ? taken & Gvcp::kSizeOfPacket : 0;
    }

    bool sendTestPacket(std::uint32_t bytes) {
        const std::uint32_t value = Gvcp::kSendTestPacket | Gvcp::kDoNotFragment | bytes;
        return static_cast<bool>(m_Channel.writeRegister(Gvcp::Registers::kPacketSize, value));
    }

private:
    ControlChannel& m_Channel;
    bool m_IsRead = false;
    bool m_IsOpen = false;
    std::uint32_t m_Port = 0;
    std::uint32_t m_Size = 0;
    std::uint32_t m_Destination = 0;
};

bool hasTestPacketArrived(const UdpSocket& socket, const std::string& camera, std::uint32_t bytes) {
    std::vector<std::uint8_t> buffer(kLargestAskedFor);
    PacketSource source;
    const auto until = Clock::now() + kPatienceWithTestPacket;
    while (socket.receive(buffer, until, source) == UdpSocket::Arrival::Packet) {
        if (source.address == camera && source.size + kHeadersOfPacket == bytes) {
            return true;
        }
    }
    return false;
}

/// The sizes that the card and the camera can do, in ascending order.
std::vector<std::uint32_t> sizesToTest(const LinkFigures& figures) {
    std::vector<std::uint32_t> sizes(kTestSizes.begin(), kTestSizes.end());
    sizes.push_back(figures.packetSize);
    std::sort(sizes.begin(), sizes.end());
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    const std::uint32_t largest = std::min(figures.reach.card->mtu, std::max(figures.largestSize, figures.packetSize));
    const auto isImpossible = [largest](std::uint32_t size) { return size < kTestSizes.front() || size > largest; };
    sizes.erase(std::remove_if(sizes.begin(), sizes.end(), isImpossible), sizes.end());
    return sizes;
}

} // namespace

void measureComputer(LinkFigures& figures) {
    figures.receiveBuffer = largestReceiveBuffer();
    // Of no protocol, so that it receives nothing.
    figures.mayUsePacketSocket = SocketOwner(socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0)).get() >= 0;
    std::error_code failure;
    figures.program = std::filesystem::read_symlink("/proc/self/exe", failure).string();
}

void measureRoundTrips(LinkFigures& figures) {
    UdpSocket socket;
    socket.connect(figures.address, Gvcp::kPort);
    std::vector<std::uint8_t> buffer(Gvcp::kPacketSize);
    PacketSource source;
    int lostInARow = 0;
    for (std::uint16_t id = 1; id <= kRoundTrips && lostInARow < kMostLostInARow; ++id) {
        const auto begin = Clock::now();
        socket.send(Gvcp::makeReadRegister(id, Gvcp::Registers::kControl));
        bool isAnswered = false;
        while (!isAnswered &&
               socket.receive(buffer, begin + kPatienceWithAnswer, source) == UdpSocket::Arrival::Packet) {
            const auto answer = Gvcp::parseAnswer(buffer.data(), std::min(source.size, buffer.size()));
            isAnswered = answer && answer->id == id;
        }
        if (isAnswered) {
            figures.roundTripsUs.push_back(std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
            lostInARow = 0;
        } else {
            ++figures.lostRoundTrips;
            ++lostInARow;
        }
    }
}

void measureTestPackets(LinkFigures& figures, ControlChannel& channel) {
    StreamRegisters registers(channel);
    if (!registers.isRead()) {
        figures.whyNotTested = "The registers of the stream cannot be read.";
        return;
    }
    figures.packetSize = registers.packetSize();
    if (registers.isStreaming()) {
        figures.whyNotTested = "The camera streams.";
        return;
    }
    figures.largestSize = registers.tryPacketSize(kLargestAskedFor);
    UdpSocket socket;
    const std::uint16_t port = socket.bind();
    const auto opened = registers.open(Ipv4::parse(channel.localAddress()).value_or(0), port);
    if (!opened) {
        figures.whyNotTested = opened.text();
        return;
    }
    for (const std::uint32_t size : sizesToTest(figures)) {
        TestedSize& tested = figures.sizes.emplace_back(TestedSize{size, false});
        for (int i = 0; i < kTestPacketsPerSize && !tested.hasArrived; ++i) {
            tested.hasArrived = registers.sendTestPacket(size) && hasTestPacketArrived(socket, figures.address, size);
        }
    }
}

} // namespace GenICamAdapter
