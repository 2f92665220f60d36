// SPDX-License-Identifier: Apache-2.0

#include "StandIn.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace GenICamAdapter {

using namespace Gvcp;

namespace {

constexpr std::string_view kDescription = "<RegisterDescription/>";
constexpr std::uint32_t kDescriptionAt = 0x10000;

/// Addresses to try: each that is in use belongs to another opening, in this process or another one.
constexpr int kMostTries = 100;
/// How long the end waits if the packet that announces it is lost.
constexpr std::chrono::milliseconds kLongestWait{100};

std::string urlOfDescription() {
    std::array<char, 64> url{};
    static_cast<void>(std::snprintf(url.data(), url.size(), "Local:camera.xml;%X;%zX", unsigned{kDescriptionAt},
                                    kDescription.size()));
    return url.data();
}

/// Copies a text, with zeros after it.
bool copyText(std::string_view text, std::size_t from, std::uint8_t* bytes, std::size_t count) {
    std::fill_n(bytes, count, std::uint8_t{0});
    text.remove_prefix(std::min(from, text.size()));
    std::copy_n(text.begin(), std::min(count, text.size()), bytes);
    return true;
}

} // namespace

StandIn::StandIn(ControlChannel& channel, const std::vector<std::uint32_t>& known)
    : m_Channel(channel), m_Registers{{Registers::kControl, kControlAccess}}, m_Address(bindToFreeAddress(m_Socket)) {
    for (const std::uint32_t address : known) {
        if (std::uint32_t value = 0; m_Channel.readRegister(address, value)) {
            m_Registers.emplace(address, value);
        }
    }
    m_Thread = std::thread([this] { run(); });
}

StandIn::~StandIn() {
    m_End = true;
    try {
        UdpSocket().sendTo(m_Address, kPort, {});
    } catch (const std::exception&) {
        // The thread looks by itself.
    }
    m_Thread.join();
}

std::string StandIn::bindToFreeAddress(UdpSocket& socket) {
    static std::atomic<unsigned> count{static_cast<unsigned>(getpid()) * 7919U};
    for (int tries = 1;; ++tries) {
        const unsigned number = count++;
        const auto octet = [number](int shift) { return std::to_string((number >> shift) % 250 + 2); };
        std::string address = "127.77." + octet(8) + '.' + octet(0);
        try {
            socket.bind(address, kPort);
            return address;
        } catch (const std::system_error&) {
            if (tries == kMostTries) {
                throw;
            }
        }
    }
}

void StandIn::run() {
    std::vector<std::uint8_t> buffer(Gvcp::kPacketSize);
    PacketSource source;
    while (!m_End) {
        if (m_Socket.receive(buffer, std::chrono::steady_clock::now() + kLongestWait, source) !=
            UdpSocket::Arrival::Packet) {
            continue;
        }
        try {
            const auto request = parseAnswer(buffer.data(), std::min(source.size, buffer.size()));
            if (const auto packet = request ? answer(*request) : std::nullopt) {
                m_Socket.sendTo(source.address, source.port, *packet);
            }
        } catch (const std::exception&) {
            // There is no memory for an answer now; Aravis asks again.
        }
    }
}

std::optional<Packet> StandIn::answer(const Answer& request) {
    const auto command = static_cast<Command>(request.kind);
    const std::uint32_t address = request.size >= 4 ? readBig32(request.payload) : 0;
    Packet payload;
    switch (command) {
    case Command::ReadRegister: {
        std::uint32_t value = 0;
        if (!readRegister(address, value)) {
            return makeAnswer(request.id, command, {}, kBusy); // without an answer, Aravis would ask again and again
        }
        appendBig32(payload, value);
        break;
    }
    case Command::ReadMemory: {
        const std::size_t count = request.size >= 8 ? readBig16(request.payload + 6) : 0;
        payload.resize(4 + std::min(count, kMostBytes));
        std::copy_n(request.payload, request.size >= 4 ? 4 : 0, payload.begin());
        if (!readMemory(address, payload.data() + 4, payload.size() - 4)) {
            return makeAnswer(request.id, command, {}, kBusy);
        }
        break;
    }
    case Command::WriteRegister:
    case Command::WriteMemory:
        appendBig32(payload, 1);
        break;
    default:
        return std::nullopt;
    }
    return makeAnswer(request.id, command, payload);
}

bool StandIn::readRegister(std::uint32_t address, std::uint32_t& value) {
    if (const auto known = m_Registers.find(address); known != m_Registers.end()) {
        value = known->second;
        return true;
    }
    return static_cast<bool>(m_Channel.readRegister(address, value));
}

bool StandIn::readMemory(std::uint32_t address, std::uint8_t* bytes, std::size_t count) {
    if (address == Registers::kFirstUrl) {
        return copyText(urlOfDescription(), 0, bytes, count);
    }
    if (address >= kDescriptionAt && address - kDescriptionAt < kDescription.size()) {
        return copyText(kDescription, address - kDescriptionAt, bytes, count);
    }
    return static_cast<bool>(m_Channel.readMemory(address, bytes, count));
}

} // namespace GenICamAdapter
