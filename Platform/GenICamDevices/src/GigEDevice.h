// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "Acquisition.h"
#include "Features.h"
#include "GigECamera.h"

namespace GenICamDevices {

/// Who sent a request. Numbers in machine order.
struct Peer {
    std::uint32_t address = 0;
    std::uint16_t port = 0;
};

inline bool operator==(const Peer& a, const Peer& b) {
    return a.address == b.address && a.port == b.port;
}
inline bool operator<(const Peer& a, const Peer& b) {
    return a.address != b.address ? a.address < b.address : a.port < b.port;
}

/// Where a camera is in the network.
struct NetworkPlace {
    std::uint32_t address = 0;
    std::uint32_t mask = 0;
    std::uint32_t gateway = 0;
};

/// Where frames go to, and how.
struct StreamTarget {
    Peer peer;
    std::uint32_t packetSize = 0;  ///< with all headers
    std::uint32_t packetDelay = 0; ///< nanoseconds
    bool doNotFragment = false;
};

/// Packets of a frame that an application misses.
struct ResendRequest {
    std::uint16_t blockId = 0;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    StreamTarget target;
};

/// A frame that is to be sent.
struct FrameOrder {
    std::uint64_t run = 0;    ///< number of the acquisition
    std::uint64_t number = 0; ///< of the frame in its acquisition
    std::uint16_t blockId = 0;
    std::uint64_t timestamp = 0; ///< nanoseconds
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const PixelFormat* format = nullptr;
    Picture picture;
    StreamTarget target;
    Faults faults;
};

/// What a request leads to.
struct Outcome {
    Bytes answer; ///< empty: none
    std::optional<ResendRequest> resend;
    std::optional<StreamTarget> testPacket;
    std::optional<NetworkPlace> moveTo; ///< if that fails, the answer becomes a refusal
};

/// Digits without a prefix.
std::string hexadecimalOf(std::uint64_t number);

/// The camera behind the sockets: its registers, who controls it, and which frames are due. Thread-safe.
class GigEDevice {
public:
    /// @param options  checked; serial number and MAC address are set
    GigEDevice(const CameraOptions& options, const NetworkPlace& place);

    /// Performs a request. Any bytes may come.
    Outcome handlePacket(const Peer& from, const std::uint8_t* packet, std::size_t size, Clock::time_point now);

    /// Waits for the next frame.
    /// @return nothing: the time is over, or the device is shut down
    std::optional<FrameOrder> waitForFrame(Clock::time_point until);
    /// Ends all waits, for good.
    void shutDown();
    bool isShutDown() const { return m_IsShutDown; }
    /// Whether the frames of an acquisition are still wanted.
    bool isWanted(std::uint64_t run) const { return m_WantedRun == run; }

    void setPlace(const NetworkPlace& place);
    void setStreamSourcePort(std::uint16_t port);
    Faults faults() const;
    void setFaults(const Faults& faults);

private:
    struct Request;
    struct Reply;
    struct CommandRow;

    struct Exchange {
        Bytes request;
        Bytes answer;
    };

    static const CommandRow* findCommand(std::uint16_t command);
    static bool isOpen(const StreamTarget& target) { return target.peer.address != 0 && target.peer.port != 0; }

    Reply discoverLocked(const Request& request, Outcome& outcome);
    Reply forceIpLocked(const Request& request, Outcome& outcome);
    Reply resendLocked(const Request& request, Outcome& outcome);
    Reply readRegistersLocked(const Request& request, Outcome& outcome);
    Reply writeRegistersLocked(const Request& request, Outcome& outcome);
    Reply readMemoryLocked(const Request& request, Outcome& outcome);
    Reply writeMemoryLocked(const Request& request, Outcome& outcome);
    GigEStatus readLocked(const Request& request, std::uint32_t address, std::size_t count, Bytes& bytes);
    GigEStatus writeLocked(const Request& request, std::uint32_t address, const std::uint8_t* bytes, std::size_t count,
                           Outcome& outcome);
    GigEStatus writePrivilegeLocked(const Request& request, std::uint32_t value);
    /// Performs what a register stands for that can only be written.
    GigEStatus actLocked(const RegisterRow& row, std::uint32_t value, Clock::time_point now);
    void fireTestPacketLocked(Outcome& outcome);
    void rememberLocked(const Peer& sender, Exchange exchange);
    void endControlLocked();
    void endExpiredControlLocked(Clock::time_point now);
    void stopStreamingLocked();
    void restartLocked(Clock::time_point now);
    void setPlaceLocked(const NetworkPlace& place);
    std::uint64_t timestampLocked(Clock::time_point now) const;
    StreamTarget streamTargetLocked() const;
    std::optional<Clock::time_point> dueLocked() const;

    const std::uint64_t m_Seed;
    const std::uint64_t m_Mac;
    std::atomic<bool> m_IsShutDown{false};
    std::atomic<std::uint64_t> m_WantedRun{0};

    mutable std::mutex m_Mutex; ///< guards everything below
    std::condition_variable m_Changed;
    RegisterFile m_Registers;
    Features m_Features;
    Acquisition m_Acquisition;
    Faults m_Faults;
    std::optional<Peer> m_Controller;
    Clock::time_point m_LastCommand;
    Clock::time_point m_TimestampZero;
    Clock::time_point m_AwayUntil; ///< after a restart
    std::uint64_t m_RequestCount = 0;
    std::map<Peer, Exchange> m_LastAnswers; ///< to each sender
};

} // namespace GenICamDevices
