// SPDX-License-Identifier: Apache-2.0

// How a camera answers requests.

#include <algorithm>
#include <chrono>
#include <cmath>

#include "GigEDevice.h"

namespace GenICamDevices {

namespace {

using namespace Address;

constexpr std::size_t kForceIpSize = 56;
constexpr std::size_t kResendSize = 12;
constexpr std::size_t kRegisterWriteSize = 8; // an address and a value
constexpr std::size_t kMemoryRangeSize = 8;   // an address and a count
constexpr std::size_t kLargestMemoryRead = 536;
constexpr std::size_t kRememberedSenders = 16;
constexpr std::uint32_t kPacketIdMask = 0xFFFFFF;
constexpr std::uint32_t kLatchTimestamp = 2;
constexpr std::uint32_t kResetTimestamp = 1;

// What chance decides on.
constexpr std::uint64_t kLoseRequest = 100;
constexpr std::uint64_t kLoseAnswer = 101;
constexpr std::uint64_t kSpoilAnswer = 102;

std::uint32_t wordOf(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bigEndian(bytes, 4));
}

/// Makes an answer wrong, in one of five ways.
void spoil(Bytes& answer, std::uint64_t way) {
    constexpr std::uint8_t kOther = 0xA5;
    switch (way % 5) {
    case 0:
        answer.resize(answer.size() / 2);
        break;
    case 1:
        answer.at(3) ^= kOther; // another request's
        break;
    case 2:
        answer.at(7) ^= kOther; // of another number
        break;
    case 3:
        putBigEndian(answer.data(), 2, static_cast<std::uint16_t>(GigEStatus::LocalProblem));
        break;
    default:
        std::for_each(answer.begin() + kControlHeaderSize, answer.end(), [](std::uint8_t& byte) { byte ^= kOther; });
    }
}

} // namespace

/// What is asked, without the header.
struct GigEDevice::Request {
    Peer from;
    const std::uint8_t* payload;
    std::size_t size;
    Clock::time_point now;
};

struct GigEDevice::Reply {
    GigEStatus status = GigEStatus::Success;
    Bytes payload;
    bool isSent = true;
};

struct GigEDevice::CommandRow {
    Reply (GigEDevice::*perform)(const Request& request, Outcome& outcome);
    GigECommand command;
    bool isRemembered; ///< a second request of the same bytes gets the same answer, and is not performed
};

const GigEDevice::CommandRow* GigEDevice::findCommand(std::uint16_t command) {
    static constexpr CommandRow kCommands[] = {
        {&GigEDevice::discoverLocked, GigECommand::Discovery, false},
        {&GigEDevice::forceIpLocked, GigECommand::ForceIp, true},
        {&GigEDevice::resendLocked, GigECommand::PacketResend, false},
        {&GigEDevice::readRegistersLocked, GigECommand::ReadRegisters, true},
        {&GigEDevice::writeRegistersLocked, GigECommand::WriteRegisters, true},
        {&GigEDevice::readMemoryLocked, GigECommand::ReadMemory, true},
        {&GigEDevice::writeMemoryLocked, GigECommand::WriteMemory, true},
    };
    const auto* const found =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [command](const CommandRow& row) { return static_cast<std::uint16_t>(row.command) == command; });
    return found == std::end(kCommands) ? nullptr : found;
}

Outcome GigEDevice::handlePacket(const Peer& from, const std::uint8_t* packet, std::size_t size,
                                 Clock::time_point now) {
    const std::lock_guard lock(m_Mutex);
    endExpiredControlLocked(now);
    if (size < kControlHeaderSize || packet[0] != kControlKey || m_Faults.silent || now < m_AwayUntil) {
        return {};
    }
    const double halfLoss = m_Faults.controlLoss / 2; // of requests, and of answers
    ++m_RequestCount;
    if (percentOf(m_Seed, m_RequestCount, kLoseRequest) < halfLoss) {
        return {};
    }
    if (m_Controller == from) {
        m_LastCommand = now;
    }

    Outcome outcome;
    const Bytes whole(packet, packet + size);
    const auto last = m_LastAnswers.find(from);
    if (last != m_LastAnswers.end() && last->second.request == whole) {
        outcome.answer = last->second.answer;
    } else {
        const auto command = static_cast<std::uint16_t>(bigEndian(packet + 2, 2));
        const CommandRow* const row = findCommand(command);
        const Request request{from, packet + kControlHeaderSize, size - kControlHeaderSize, now};
        Reply reply;
        if (bigEndian(packet + 4, 2) != request.size || request.size > kLargestControlPayload) {
            reply.status = GigEStatus::InvalidHeader;
        } else if (row == nullptr) {
            reply.status = GigEStatus::NotImplemented;
        } else {
            reply = (this->*row->perform)(request, outcome);
        }
        if (reply.isSent && (packet[1] & kAnswerWanted) != 0) {
            appendBigEndian(outcome.answer, 2, static_cast<std::uint16_t>(reply.status));
            appendBigEndian(outcome.answer, 2, command + 1U);
            appendBigEndian(outcome.answer, 2, reply.payload.size());
            outcome.answer.insert(outcome.answer.end(), packet + 6, packet + 8);
            outcome.answer.insert(outcome.answer.end(), reply.payload.begin(), reply.payload.end());
        }
        if (row != nullptr && row->isRemembered) {
            rememberLocked(from, {whole, outcome.answer});
        }
    }
    if (percentOf(m_Seed, m_RequestCount, kLoseAnswer) < halfLoss) {
        outcome.answer.clear();
    }
    if (!outcome.answer.empty() && percentOf(m_Seed, m_RequestCount, kSpoilAnswer) < m_Faults.wrongAnswers) {
        spoil(outcome.answer, m_RequestCount);
    }
    return outcome;
}

void GigEDevice::rememberLocked(const Peer& sender, Exchange exchange) {
    if (m_LastAnswers.size() >= kRememberedSenders && m_LastAnswers.count(sender) == 0) {
        const bool spareFirst = m_Controller == m_LastAnswers.begin()->first;
        m_LastAnswers.erase(spareFirst ? std::next(m_LastAnswers.begin()) : m_LastAnswers.begin());
    }
    m_LastAnswers[sender] = std::move(exchange);
}

GigEDevice::Reply GigEDevice::discoverLocked(const Request& /*request*/, Outcome& /*outcome*/) {
    Reply reply;
    reply.status = m_Registers.read(0, kDiscoveryAnswerSize, reply.payload);
    return reply;
}

GigEDevice::Reply GigEDevice::forceIpLocked(const Request& request, Outcome& outcome) {
    Reply reply;
    reply.isSent = request.size == kForceIpSize && bigEndian(request.payload + 2, 6) == m_Mac;
    if (!reply.isSent) {
        return reply; // the request is for another device
    }
    if (m_Controller || m_Faults.deny) {
        reply.status = GigEStatus::AccessDenied;
    } else if (const std::uint32_t address = wordOf(request.payload + 20); address != 0) {
        outcome.moveTo = NetworkPlace{address, wordOf(request.payload + 36), wordOf(request.payload + 52)};
    }
    return reply;
}

GigEDevice::Reply GigEDevice::resendLocked(const Request& request, Outcome& outcome) {
    Reply reply;
    reply.isSent = false;
    const bool isUser = m_Controller && m_Controller->address == request.from.address;
    const bool isReceiver = m_Registers.integer(kStreamDestination) == request.from.address;
    if (request.size == kResendSize && (isUser || isReceiver) && !m_Faults.noResend) {
        outcome.resend = ResendRequest{static_cast<std::uint16_t>(bigEndian(request.payload + 2, 2)),
                                       wordOf(request.payload + 4) & kPacketIdMask,
                                       wordOf(request.payload + 8) & kPacketIdMask, streamTargetLocked()};
    }
    return reply;
}

GigEDevice::Reply GigEDevice::readRegistersLocked(const Request& request, Outcome& /*outcome*/) {
    Reply reply;
    if (request.size == 0 || request.size % 4 != 0) {
        reply.status = GigEStatus::InvalidHeader;
    }
    for (std::size_t i = 0; reply.status == GigEStatus::Success && i < request.size; i += 4) {
        reply.status = readLocked(request, wordOf(request.payload + i), 4, reply.payload);
    }
    return reply;
}

GigEDevice::Reply GigEDevice::writeRegistersLocked(const Request& request, Outcome& outcome) {
    Reply reply;
    if (request.size == 0 || request.size % kRegisterWriteSize != 0) {
        reply.status = GigEStatus::InvalidHeader;
    }
    std::size_t done = 0; // registers that were written, of which the answer has the number
    for (; reply.status == GigEStatus::Success && done < request.size / kRegisterWriteSize;) {
        const std::uint8_t* const entry = request.payload + done * kRegisterWriteSize;
        reply.status = writeLocked(request, wordOf(entry), entry + 4, 4, outcome);
        done += reply.status == GigEStatus::Success ? 1 : 0;
    }
    appendBigEndian(reply.payload, 4, done);
    return reply;
}

GigEDevice::Reply GigEDevice::readMemoryLocked(const Request& request, Outcome& /*outcome*/) {
    Reply reply;
    if (request.size != kMemoryRangeSize) {
        reply.status = GigEStatus::InvalidHeader;
        return reply;
    }
    const std::uint64_t count = bigEndian(request.payload + 6, 2);
    if (count == 0 || count > kLargestMemoryRead) {
        reply.status = GigEStatus::InvalidParameter;
        return reply;
    }
    reply.payload.assign(request.payload, request.payload + 4);
    reply.status = readLocked(request, wordOf(request.payload), count, reply.payload);
    return reply;
}

GigEDevice::Reply GigEDevice::writeMemoryLocked(const Request& request, Outcome& outcome) {
    Reply reply;
    if (request.size <= 4) {
        reply.status = GigEStatus::InvalidHeader;
        return reply;
    }
    const std::size_t count = request.size - 4;
    reply.status = writeLocked(request, wordOf(request.payload), request.payload + 4, count, outcome);
    appendBigEndian(reply.payload, 4, reply.status == GigEStatus::Success ? count : 0);
    return reply;
}

GigEStatus GigEDevice::readLocked(const Request& request, std::uint32_t address, std::size_t count, Bytes& bytes) {
    const bool isExclusive = (m_Registers.integer(kPrivilege) & kExclusiveAccess) != 0;
    if (isExclusive && !(m_Controller == request.from)) {
        return GigEStatus::AccessDenied;
    }
    // Within a minute it falls from 42 to 38 degrees and rises again.
    const double seconds = std::chrono::duration<double>(request.now - m_TimestampZero).count();
    m_Registers.setReal(kTemperature, static_cast<float>(38 + std::abs(std::fmod(seconds, 60) - 30) * 4 / 30));
    return m_Registers.read(address, count, bytes);
}

GigEStatus GigEDevice::writeLocked(const Request& request, std::uint32_t address, const std::uint8_t* bytes,
                                   std::size_t count, Outcome& outcome) {
    if (const GigEStatus status = m_Registers.checkWritable(address, count); status != GigEStatus::Success) {
        return status;
    }
    if (address == kPrivilege) {
        return writePrivilegeLocked(request, wordOf(bytes));
    }
    if (!(m_Controller == request.from)) {
        return GigEStatus::AccessDenied;
    }
    // All values are checked before the first one is stored. A part of a register leaves the rest of it as it is.
    std::vector<std::pair<const RegisterRow*, Bytes>> values;
    for (std::size_t offset = 0; offset < count; offset += 4) {
        const auto word = static_cast<std::uint32_t>(address + offset);
        const RegisterRow* const row = m_Registers.rowAt(word);
        if (values.empty() || values.back().first != row) {
            const std::uint8_t* const present = m_Registers.bytesOf(row->address);
            values.emplace_back(row, Bytes(present, present + row->length));
        }
        std::copy_n(bytes + offset, 4, &values.back().second[word - row->address]);
    }
    for (const auto& [row, value] : values) {
        const GigEStatus status = m_Features.check(*row, value.data(), m_Acquisition.isActive());
        if (status != GigEStatus::Success) {
            return status;
        }
    }
    for (const auto& [row, value] : values) {
        if (row->access == Access::WriteOnly) {
            const GigEStatus status = actLocked(*row, wordOf(value.data()), request.now);
            if (status != GigEStatus::Success) {
                return status;
            }
            continue;
        }
        m_Registers.store(row->address, value.data(), value.size());
        m_Features.update(*row);
        if (row->address == kStreamPacketSize) {
            fireTestPacketLocked(outcome);
        } else if (row->address == kStreamPort && m_Registers.integer(kStreamPort) == 0) {
            stopStreamingLocked();
        }
    }
    m_Changed.notify_all();
    return GigEStatus::Success;
}

GigEStatus GigEDevice::writePrivilegeLocked(const Request& request, std::uint32_t value) {
    if (m_Faults.deny || (m_Controller && !(m_Controller == request.from))) {
        return GigEStatus::AccessDenied;
    }
    if ((value & ~(kExclusiveAccess | kControlAccess)) != 0) {
        return GigEStatus::InvalidParameter;
    }
    if (value == 0) {
        if (m_Controller) {
            endControlLocked();
        }
        return GigEStatus::Success;
    }
    m_Controller = request.from;
    m_LastCommand = request.now;
    m_Registers.setInteger(kPrivilege, value);
    return GigEStatus::Success;
}

void GigEDevice::fireTestPacketLocked(Outcome& outcome) {
    const std::uint32_t value = m_Registers.integer(kStreamPacketSize);
    const StreamTarget target = streamTargetLocked();
    if ((value & kFireTestPacket) != 0 && isOpen(target) && !m_Faults.noTestPackets) {
        outcome.testPacket = target;
    }
    m_Registers.setInteger(kStreamPacketSize, value & ~kFireTestPacket);
}

GigEStatus GigEDevice::actLocked(const RegisterRow& row, std::uint32_t value, Clock::time_point now) {
    if (value == 0) {
        return GigEStatus::Success;
    }
    switch (row.address) {
    case kTimestampControl:
        if ((value & kResetTimestamp) != 0) {
            m_TimestampZero = now;
        }
        if ((value & kLatchTimestamp) != 0) {
            m_Registers.setLong(kTimestamp, timestampLocked(now));
        }
        return GigEStatus::Success;
    case kDeviceReset:
        restartLocked(now);
        return GigEStatus::Success;
    case kAcquisitionStart:
        if (!m_Acquisition.isActive()) {
            m_Acquisition.start(m_Features, now);
            m_WantedRun = m_Acquisition.run();
            m_Registers.setInteger(kAcquisitionStatus, 1);
        }
        return GigEStatus::Success;
    case kAcquisitionStop:
        stopStreamingLocked();
        return GigEStatus::Success;
    case kTriggerSoftware: {
        const std::uint32_t selected = m_Registers.integer(kTriggerSelector);
        if (!m_Features.waitsForTrigger(selected)) {
            return GigEStatus::AccessDenied;
        }
        m_Acquisition.trigger(m_Features, selected);
        return GigEStatus::Success;
    }
    case kUserSetLoad:
        return m_Features.loadUserSet();
    case kUserSetSave:
        return m_Features.saveUserSet();
    default:
        return GigEStatus::Success;
    }
}

} // namespace GenICamDevices
