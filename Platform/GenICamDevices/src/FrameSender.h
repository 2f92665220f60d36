// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "FrameRenderer.h"
#include "GigEDevice.h"
#include "Socket.h"

namespace GenICamDevices {

/// Sends frames as packets, with the faults that were ordered, and parts of the last frames again. One thread sends
/// frames; any thread may call the rest.
class FrameSender {
public:
    /// @param address  that packets come from
    FrameSender(std::uint32_t address, std::uint64_t seed);

    void setAddress(std::uint32_t address);
    std::uint16_t port() const;

    /// Sends a frame.
    /// @param isWanted  asked between packets; the rest of a frame that is no longer wanted is not sent
    void send(const FrameOrder& order, const std::function<bool()>& isWanted);
    /// When the next packet that is late is to be sent; the end of time if none is.
    Clock::time_point nextLatePacket() const;
    void sendLatePackets(Clock::time_point now);

    void resend(const ResendRequest& request, const Faults& faults);
    void sendTestPacket(const StreamTarget& target);

    CameraCounts counts() const;

private:
    struct Frame;
    struct Packet {
        std::array<std::uint8_t, 44> head;
        std::size_t headSize = 0;
        const std::uint8_t* data = nullptr;
        std::size_t dataSize = 0;
    };
    struct LatePacket {
        Clock::time_point due;
        Peer peer;
        Bytes bytes;
    };
    class Pacer;

    static Packet packetOf(const Frame& frame, std::uint32_t id);
    std::shared_ptr<Frame> makeFrame(const FrameOrder& order);
    void keepFrame(std::shared_ptr<Frame> frame);
    /// Sends packets in one call, as far as possible.
    void sendBatch(const std::vector<Packet>& packets, const StreamTarget& target);
    void delay(const Packet& packet, const FrameOrder& order);
    bool happens(double percent, const FrameOrder& order, std::uint32_t packet, std::uint64_t purpose) const;

    const std::uint64_t m_Seed;
    FrameRenderer m_Renderer;             // of the thread that sends frames
    std::deque<LatePacket> m_LatePackets; // of the thread that sends frames, by time

    mutable std::mutex m_SocketMutex; ///< guards the socket, and what it was told
    Socket m_Socket;
    bool m_DoesNotFragment = false;

    std::mutex m_FramesMutex; ///< guards the frames and their number
    std::deque<std::shared_ptr<Frame>> m_Frames;
    std::uint64_t m_ResendCount = 0;

    std::atomic<std::uint64_t> m_FramesSent{0};
    std::atomic<std::uint64_t> m_PacketsSent{0};
    std::atomic<std::uint64_t> m_PacketsDropped{0};
    std::atomic<std::uint64_t> m_ResendsAnswered{0};
};

} // namespace GenICamDevices
