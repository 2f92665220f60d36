// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Gvcp.h"
#include "UdpSocket.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

/// The control channel of one GigE Vision camera: reads and writes its memory, and keeps control of it.
///
/// A camera that does not answer is given up after half a second at the latest (a write: after two), and from then on
/// after 0.1 s, until it answers again. Thread-safe: one access at a time, others wait for it.
class ControlChannel {
public:
    /// How an access ended.
    struct Result {
        enum class Kind : std::uint8_t { Done, Refused, Silent };
        Kind kind = Kind::Silent;
        std::uint16_t status = 0; ///< if refused

        explicit operator bool() const { return kind == Kind::Done; }
        std::string text() const;
    };

    static constexpr const char* kControlledByAnother = "Another program controls it.";

    /// @throws std::system_error  no route leads to the address
    explicit ControlChannel(const std::string& address);
    ControlChannel(const ControlChannel&) = delete;
    ControlChannel& operator=(const ControlChannel&) = delete;
    ~ControlChannel() { leaveControl(); }

    std::string localAddress() const { return m_LocalAddress; }

    /// Lets everything end by then, whatever the camera does; time_point::max() ends that.
    void setDeadline(std::chrono::steady_clock::time_point deadline) QUILL_EXCLUDES(m_Mutex);
    bool isPastDeadline() QUILL_EXCLUDES(m_Mutex);

    Result readRegister(std::uint32_t address, std::uint32_t& value) QUILL_EXCLUDES(m_Mutex);
    Result writeRegister(std::uint32_t address, std::uint32_t value) QUILL_EXCLUDES(m_Mutex);
    /// Any number of bytes at any address.
    Result readMemory(std::uint32_t address, std::uint8_t* data, std::size_t bytes) QUILL_EXCLUDES(m_Mutex);
    Result writeMemory(std::uint32_t address, const std::uint8_t* data, std::size_t bytes) QUILL_EXCLUDES(m_Mutex);

    /// Takes control of the camera and keeps it until the end, by a thread that gives signs of life.
    /// @param heartbeatMs the time-out to set; 0 leaves the camera's own
    /// @return why it cannot be taken, as a sentence; empty if it was
    std::string takeControl(std::uint32_t heartbeatMs);
    /// Gives control back. Not to be called by two threads at once.
    /// @return whether the camera answered
    bool leaveControl();
    /// Gives control back once more, after a leaveControl() that the camera did not answer.
    /// @return whether that is settled: by an answer, or since the camera's own time-out has passed
    bool repeatGoodBye();
    /// Whether the good-bye is to be repeated. True at most once.
    bool owesGoodBye() { return m_OwesGoodBye.exchange(false); }
    /// Says that a program controls the camera, and its address if the camera knows it; empty if nobody does.
    std::string controller();
    /// Asks the camera for a sign of life. False also if it answers but control was lost.
    bool isAlive();
    /// Whether the camera said that this program controls it no longer.
    bool hasLostControl() const { return m_ControlLost; }

private:
    using Clock = std::chrono::steady_clock;

    /// Sends a command and waits for its answer, which lies in the buffer.
    Result ask(Gvcp::Packet packet, Gvcp::Command command, Gvcp::Answer& answer) QUILL_REQUIRES(m_Mutex);
    /// @param latest  where a camera that asks for more time finds its end
    UdpSocket::Arrival waitForAnswer(std::uint16_t id, Gvcp::Command command, Clock::time_point until,
                                     Clock::time_point latest, Gvcp::Answer& answer) QUILL_REQUIRES(m_Mutex);
    std::uint16_t nextId() QUILL_REQUIRES(m_Mutex);
    void keepControl();

    std::string m_LocalAddress;
    std::atomic<bool> m_Silent{false};
    std::atomic<bool> m_HasControl{false};
    std::atomic<bool> m_ControlLost{false};
    std::atomic<bool> m_OwesGoodBye{false};
    std::chrono::milliseconds m_HeartbeatTimeout{0}; // the camera's
    std::chrono::milliseconds m_Period{0};
    Clock::time_point m_GoodBye;                   // the first one
    std::optional<std::uint32_t> m_ControllerPort; // the camera's record of this program's port, where it has one

    Utilities::Mutex m_Mutex; // guards the socket; held during an access
    UdpSocket m_Socket QUILL_GUARDED_BY(m_Mutex);
    std::vector<std::uint8_t> m_Buffer QUILL_GUARDED_BY(m_Mutex);
    std::uint16_t m_Id QUILL_GUARDED_BY(m_Mutex) = 0;
    Clock::time_point m_Deadline QUILL_GUARDED_BY(m_Mutex) = Clock::time_point::max();

    Utilities::Mutex m_EndMutex; // guards the end of the thread
    std::condition_variable m_EndRequested;
    bool m_End QUILL_GUARDED_BY(m_EndMutex) = false;
    std::thread m_Keeper;
};

} // namespace GenICamAdapter
