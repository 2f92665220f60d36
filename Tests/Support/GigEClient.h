// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <utility>

#include "GigEWire.h"

namespace TestSupport {

/// A request of GVCP.
GenICamDevices::Bytes gigeRequest(GenICamDevices::GigECommand command, std::uint16_t id,
                                  const GenICamDevices::Bytes& payload);

/// Addresses, values or counts, each of 4 bytes.
GenICamDevices::Bytes gigeWords(std::initializer_list<std::uint32_t> words);

/// The status that an answer begins with.
GenICamDevices::GigEStatus gigeStatus(const GenICamDevices::Bytes& answer);

/// Packets of frames, by block id and packet id.
using GigEPackets = std::map<std::pair<std::uint32_t, std::uint32_t>, GenICamDevices::Bytes>;

/// An application that controls a camera at a loopback address through two sockets.
class GigEClient {
public:
    /// Takes control and opens the stream.
    explicit GigEClient(const std::string& cameraAddress);
    GigEClient(const GigEClient&) = delete;
    GigEClient& operator=(const GigEClient&) = delete;
    ~GigEClient();

    void write(std::uint32_t address, std::uint32_t value);
    /// Sends a request that has no answer.
    void send(GenICamDevices::GigECommand command, const GenICamDevices::Bytes& payload);
    /// Waits for the next packet of the stream, and keeps it.
    /// @return its datagram; empty: none came
    GenICamDevices::Bytes nextPacket();
    const GigEPackets& packets() const { return m_Packets; }
    void forgetPackets() { m_Packets.clear(); }
    /// The payload of a frame, of the packets between leader and trailer that were kept.
    GenICamDevices::Bytes payload(std::uint32_t blockId) const;

private:
    int m_Control;
    int m_Stream;
    std::uint16_t m_Id = 0;
    GigEPackets m_Packets;
};

} // namespace TestSupport
