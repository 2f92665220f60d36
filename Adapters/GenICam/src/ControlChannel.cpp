// SPDX-License-Identifier: Apache-2.0

#include "ControlChannel.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "Cameras/GenICam/Ipv4.h"

namespace GenICamAdapter {

using Utilities::MutexLock;
using namespace std::chrono_literals;

namespace {

using namespace Gvcp;

// Waits for the answers to a command and to its repetitions. Some cameras need long to write to their flash.
constexpr std::array kReadingWaits{150ms, 150ms, 150ms};
constexpr std::array kWritingWaits{200ms, 300ms, 1000ms};
constexpr std::array kSilentWaits{100ms, 0ms, 0ms};
/// A port that nobody listens on may belong to a camera that is just starting.
constexpr auto kPauseAfterRefusal = 20ms;
/// The longest time that a camera may ask for, with all repetitions of a command.
constexpr auto kLongestPending = 10000ms;
/// A sign of life is due after a fraction of the time-out, and at the latest after half a second.
constexpr int kSignsPerTimeout = 5;
constexpr auto kLongestPeriod = 500ms;
constexpr auto kShortestPeriod = 50ms;
/// A camera that asks for more does not free itself.
constexpr std::chrono::milliseconds kLongestHeartbeat = 1h;

bool isWriting(Command command) {
    return command == Command::WriteRegister || command == Command::WriteMemory;
}

} // namespace

std::string ControlChannel::Result::text() const {
    switch (kind) {
    case Kind::Done:
        return "";
    case Kind::Refused:
        return "The camera refuses: " + nameOfStatus(status) + ".";
    case Kind::Silent:
        break;
    }
    return "The camera does not answer.";
}

ControlChannel::ControlChannel(const std::string& address) : m_Buffer(kPacketSize) {
    m_Socket.connect(address, kPort);
    m_LocalAddress = m_Socket.localAddress();
}

bool ControlChannel::leaveControl() {
    if (!m_HasControl.exchange(false)) {
        return !m_Silent;
    }
    {
        const MutexLock lock(m_EndMutex);
        m_End = true;
    }
    m_EndRequested.notify_all();
    if (m_Keeper.joinable()) {
        m_Keeper.join();
    }
    if (m_ControlLost) {
        return !m_Silent;
    }
    m_GoodBye = Clock::now();
    m_OwesGoodBye = writeRegister(Registers::kControl, 0).kind == Result::Kind::Silent;
    return !m_OwesGoodBye;
}

bool ControlChannel::repeatGoodBye() {
    return writeRegister(Registers::kControl, 0).kind != Result::Kind::Silent ||
           Clock::now() > m_GoodBye + std::min(m_HeartbeatTimeout, kLongestHeartbeat) + kLongestPeriod;
}

void ControlChannel::setDeadline(Clock::time_point deadline) {
    const MutexLock lock(m_Mutex);
    m_Deadline = deadline;
}

bool ControlChannel::isPastDeadline() {
    const MutexLock lock(m_Mutex);
    return Clock::now() >= m_Deadline;
}

std::uint16_t ControlChannel::nextId() {
    m_Id = static_cast<std::uint16_t>(m_Id % 0xFFFF + 1); // never 0
    return m_Id;
}

ControlChannel::Result ControlChannel::ask(Packet packet, Command command, Answer& answer) {
    const std::uint16_t id = readBig16(packet.data() + 6);
    const auto& waits = m_Silent ? kSilentWaits : isWriting(command) ? kWritingWaits : kReadingWaits;
    const Clock::time_point latest = std::min(Clock::now() + kLongestPending, m_Deadline);
    for (const auto wait : waits) {
        const Clock::time_point now = Clock::now();
        if (wait == 0ms) {
            break;
        }
        if (now >= m_Deadline) {
            return {}; // which says nothing of the next access
        }
        m_Socket.send(packet);
        switch (waitForAnswer(id, command, std::min(now + wait, m_Deadline), latest, answer)) {
        case UdpSocket::Arrival::Packet:
            m_Silent = false;
            if (answer.status != 0) {
                return {Result::Kind::Refused, answer.status};
            }
            return {Result::Kind::Done, 0};
        case UdpSocket::Arrival::Refused:
            std::this_thread::sleep_for(kPauseAfterRefusal);
            break;
        case UdpSocket::Arrival::TimedOut:
            break;
        }
    }
    m_Silent = true;
    return {Result::Kind::Silent, 0};
}

UdpSocket::Arrival ControlChannel::waitForAnswer(std::uint16_t id, Command command, Clock::time_point until,
                                                 Clock::time_point latest, Answer& answer) {
    PacketSource source;
    while (true) {
        const UdpSocket::Arrival arrival = m_Socket.receive(m_Buffer, until, source);
        if (arrival != UdpSocket::Arrival::Packet) {
            return arrival;
        }
        const auto parsed = parseAnswer(m_Buffer.data(), std::min(source.size, m_Buffer.size()));
        const Match match = parsed ? matchOf(*parsed, id, command) : Match::Foreign; // of an earlier command
        if (match == Match::Ours) {
            answer = *parsed;
            return arrival;
        }
        if (match == Match::Pending) {
            until = std::min(latest, Clock::now() + std::chrono::milliseconds(pendingMsOf(*parsed)) + 50ms);
        } else if (Clock::now() >= until) {
            return UdpSocket::Arrival::TimedOut;
        }
    }
}

ControlChannel::Result ControlChannel::readRegister(std::uint32_t address, std::uint32_t& value) {
    const MutexLock lock(m_Mutex);
    Answer answer;
    const Result result = ask(makeReadRegister(nextId(), address), Command::ReadRegister, answer);
    if (result && answer.size < sizeof value) {
        return {};
    }
    if (result) {
        value = readBig32(answer.payload);
    }
    return result;
}

ControlChannel::Result ControlChannel::writeRegister(std::uint32_t address, std::uint32_t value) {
    const MutexLock lock(m_Mutex);
    Answer answer;
    return ask(makeWriteRegister(nextId(), address, value), Command::WriteRegister, answer);
}

ControlChannel::Result ControlChannel::readMemory(std::uint32_t address, std::uint8_t* data, std::size_t bytes) {
    const MutexLock lock(m_Mutex);
    for (std::size_t done = 0; done < bytes;) {
        // Cameras read whole words at addresses of whole words.
        const std::size_t lead = (address + done) % 4;
        const std::size_t wanted = std::min(bytes - done, kMostBytes - lead);
        const auto padded = static_cast<std::uint16_t>((lead + wanted + 3) / 4 * 4);
        const auto at = static_cast<std::uint32_t>(address + done - lead);
        Answer answer;
        const Result result = ask(makeReadMemory(nextId(), at, padded), Command::ReadMemory, answer);
        if (!result) {
            return result;
        }
        const std::uint8_t* const bytesOfAnswer = memoryOf(answer, lead + wanted);
        if (bytesOfAnswer == nullptr) {
            return {};
        }
        std::memcpy(data + done, bytesOfAnswer + lead, wanted);
        done += wanted;
    }
    return {Result::Kind::Done, 0};
}

ControlChannel::Result ControlChannel::writeMemory(std::uint32_t address, const std::uint8_t* data, std::size_t bytes) {
    const MutexLock lock(m_Mutex);
    for (std::size_t done = 0; done < bytes;) {
        const std::size_t part = std::min(bytes - done, kMostBytes);
        const auto at = static_cast<std::uint32_t>(address + done);
        Answer answer;
        const Result result = ask(makeWriteMemory(nextId(), at, data + done, part), Command::WriteMemory, answer);
        if (!result) {
            return result;
        }
        done += part;
    }
    return {Result::Kind::Done, 0};
}

std::string ControlChannel::takeControl(std::uint32_t heartbeatMs) {
    if (std::string held = controller(); !held.empty()) {
        return held;
    }
    if (const Result result = writeRegister(Registers::kControl, kControlAccess); !result) {
        return result.status == kAccessDenied ? kControlledByAnother : result.text();
    }
    if (heartbeatMs != 0) {
        writeRegister(Registers::kHeartbeatTimeout, heartbeatMs); // not writable on every camera
    }
    std::uint32_t timeoutMs = 0;
    readRegister(Registers::kHeartbeatTimeout, timeoutMs);
    m_HeartbeatTimeout = std::chrono::milliseconds(timeoutMs);
    m_Period = std::clamp(std::chrono::milliseconds(timeoutMs / kSignsPerTimeout), kShortestPeriod, kLongestPeriod);
    if (std::uint32_t port = 0; readRegister(Registers::kControllerPort, port) && port != 0) {
        m_ControllerPort = port;
    }
    m_HasControl = true;
    try {
        m_Keeper = std::thread([this] { keepControl(); });
    } catch (const std::exception&) {
        leaveControl();
        throw;
    }
    return "";
}

std::string ControlChannel::controller() {
    std::uint32_t access = 0;
    if (!readRegister(Registers::kControl, access) || (access & (kControlAccess | kExclusiveAccess)) == 0) {
        return "";
    }
    std::uint32_t address = 0;
    if (!readRegister(Registers::kControllerAddress, address) || address == 0) {
        return kControlledByAnother;
    }
    return "Another program, at " + CameraInterface::GenICam::Ipv4::format(address) + ", controls it.";
}

bool ControlChannel::isAlive() {
    std::uint32_t access = 0;
    const Result result = readRegister(Registers::kControl, access);
    if (m_HasControl && result) {
        std::uint32_t port = 0;
        const bool isAnothers =
            m_ControllerPort && readRegister(Registers::kControllerPort, port) && port != *m_ControllerPort;
        if ((access & kControlAccess) == 0 || isAnothers) {
            m_ControlLost = true; // the camera has restarted, or took the silence for an end
        }
    }
    return result.kind != Result::Kind::Silent && !m_ControlLost;
}

void ControlChannel::keepControl() {
    while (true) {
        {
            MutexLock lock(m_EndMutex);
            const auto isEnding = [this]() QUILL_REQUIRES(m_EndMutex) { return m_End; };
            if (lock.waitFor(m_EndRequested, m_Period, isEnding)) {
                return;
            }
        }
        try {
            isAlive();
        } catch (const std::exception&) {
            // There is no memory for a packet now; there may be the next time.
        }
    }
}

} // namespace GenICamAdapter
