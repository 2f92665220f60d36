// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>

#include "ControlChannel.h"
#include "Gvcp.h"
#include "UdpSocket.h"

namespace GenICamAdapter {

/// Answers Aravis in a camera's place, at an address of this computer alone, while Aravis opens the camera.
///
/// Aravis fetches the description of a camera and takes control of it by means of its own, without a bound for their
/// time, and while all other openings wait. Here it gets the head of the description and control at once; other
/// registers are read from the camera.
class StandIn {
public:
    /// @param channel to the camera; outlives this object
    /// @throws std::system_error  this computer has no loopback card
    /// @param description the XML document that is sent for the camera's
    explicit StandIn(ControlChannel& channel, std::string description = "");
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;
    ~StandIn();

    const std::string& address() const { return m_Address; }

private:
    static std::string bindToFreeAddress(UdpSocket& socket);
    void run();
    std::optional<Gvcp::Packet> answer(const Gvcp::Answer& request);
    bool readMemory(std::uint32_t address, std::uint8_t* bytes, std::size_t count);

    ControlChannel& m_Channel;
    UdpSocket m_Socket;
    const std::string m_Description;
    const std::string m_Url;
    const std::string m_Address;
    std::atomic<bool> m_End{false};
    std::thread m_Thread;
};

} // namespace GenICamAdapter
