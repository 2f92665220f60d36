// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ControlChannel.h"
#include "Gvcp.h"
#include "UdpSocket.h"

namespace GenICamAdapter {

/// Answers Aravis in a camera's place, at an address of this computer alone, while Aravis opens the camera.
///
/// Aravis fetches the description of a camera and takes control of it by means of its own, without a bound for their
/// time, and while all other openings wait. Here it gets an empty description and control at once; other registers are
/// the camera's.
class StandIn {
public:
    /// @param channel to the camera; outlives this object
    /// @param known  registers that are read at once. Others are read when Aravis asks, behind what else uses the
    /// channel.
    /// @throws std::system_error  this computer has no loopback card
    explicit StandIn(ControlChannel& channel, const std::vector<std::uint32_t>& known = {});
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;
    ~StandIn();

    const std::string& address() const { return m_Address; }

private:
    static std::string bindToFreeAddress(UdpSocket& socket);
    void run();
    std::optional<Gvcp::Packet> answer(const Gvcp::Answer& request);
    bool readRegister(std::uint32_t address, std::uint32_t& value);
    bool readMemory(std::uint32_t address, std::uint8_t* bytes, std::size_t count);

    ControlChannel& m_Channel;
    UdpSocket m_Socket;
    std::map<std::uint32_t, std::uint32_t> m_Registers; // Aravis gets these values
    const std::string m_Address;
    std::atomic<bool> m_End{false};
    std::thread m_Thread;
};

} // namespace GenICamAdapter
