// SPDX-License-Identifier: Apache-2.0

#include "FrameSender.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>

namespace GenICamDevices {

namespace {

constexpr std::size_t kBatch = 64; // packets of a call
constexpr std::size_t kKeptFrames = 16;
constexpr std::size_t kKeptBytes = std::size_t{64} << 20;
constexpr std::size_t kMostLatePackets = 10000;
constexpr std::uint32_t kMostUnavailable = 32; // packets of which a request hears that they are gone
constexpr std::size_t kStreamHeaderSize = 8;
constexpr std::uint16_t kImagePayload = 1;
constexpr std::chrono::microseconds kShortestSleep{100};

// What chance decides on.
enum Purpose : std::uint64_t { LOSE, SWAP, DUPLICATE, DELAY, LOSE_AGAIN };

void sleepUntil(Clock::time_point time) {
    const auto nanoseconds = std::chrono::nanoseconds(time.time_since_epoch()).count();
    const timespec until{nanoseconds / 1000000000, nanoseconds % 1000000000};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

void putHeader(std::uint8_t* bytes, GigEStatus status, std::uint16_t blockId, GigEPacket kind, std::uint32_t packetId) {
    putBigEndian(bytes, 2, static_cast<std::uint16_t>(status));
    putBigEndian(bytes + 2, 2, blockId);
    bytes[4] = static_cast<std::uint8_t>(kind);
    putBigEndian(bytes + 5, 3, packetId);
}

} // namespace

struct FrameSender::Frame {
    FrameOrder order;
    Bytes payload;             ///< may be longer than what is sent
    std::size_t size = 0;      ///< bytes that are sent
    std::uint32_t rows = 0;    ///< that the trailer announces
    std::size_t chunk = 0;     ///< bytes of a packet
    std::uint32_t packets = 0; ///< leader and trailer included
};

/// Keeps the time between packets: sleeps once enough of it has come together.
class FrameSender::Pacer {
public:
    explicit Pacer(std::chrono::nanoseconds delay) : m_Delay(delay), m_Next(Clock::now()) {
        if (delay.count() > 0) {
            const auto atOnce = static_cast<std::size_t>(kShortestSleep / delay + 1);
            m_Batch = std::min(atOnce, kBatch);
        }
    }
    std::size_t batch() const { return m_Batch; }
    void wait(std::size_t packets) {
        if (m_Delay.count() > 0) {
            m_Next += m_Delay * packets;
            sleepUntil(m_Next);
        }
    }

private:
    const std::chrono::nanoseconds m_Delay;
    std::size_t m_Batch = kBatch;
    Clock::time_point m_Next;
};

FrameSender::FrameSender(std::uint32_t address, std::uint64_t seed)
    : m_Seed(seed), m_Socket(Socket::forStream(address)) {}

void FrameSender::setAddress(std::uint32_t address) {
    Socket socket = Socket::forStream(address);
    const std::lock_guard lock(m_SocketMutex);
    m_Socket = std::move(socket);
    m_DoesNotFragment = false;
}

std::uint16_t FrameSender::port() const {
    const std::lock_guard lock(m_SocketMutex);
    return m_Socket.port();
}

std::shared_ptr<FrameSender::Frame> FrameSender::makeFrame(const FrameOrder& order) {
    auto frame = std::make_shared<Frame>();
    {
        // The oldest frame's memory is used again.
        const std::lock_guard lock(m_FramesMutex);
        if (m_Frames.size() >= kKeptFrames && m_Frames.front().use_count() == 1) {
            frame = std::move(m_Frames.front());
            m_Frames.pop_front();
        }
    }
    frame->order = order;
    if (order.faults.varyHeight && order.number % 2 != 0) {
        frame->order.height /= 2;
    }
    frame->rows = frame->order.height;
    std::uint32_t drawnRows = frame->rows;
    if (order.faults.lie == Lie::Size) {
        drawnRows += (frame->order.height + 3) / 4;
    }
    const std::size_t rowSize = order.format->rowSize(order.width);
    frame->size = rowSize * drawnRows;
    if (frame->payload.size() < frame->size) {
        frame->payload.resize(frame->size);
    }
    m_Renderer.render(order.picture, *order.format, order.width, order.blockId, drawnRows, frame->payload.data());
    if (order.faults.shortFrames) {
        frame->rows = frame->order.height * 3 / 4;
        frame->size = rowSize * frame->rows;
    }
    frame->chunk = order.target.packetSize - kPacketOverhead;
    frame->packets = static_cast<std::uint32_t>((frame->size + frame->chunk - 1) / frame->chunk) + 2;
    return frame;
}

void FrameSender::keepFrame(std::shared_ptr<Frame> frame) {
    const std::lock_guard lock(m_FramesMutex);
    m_Frames.push_back(std::move(frame));
    std::size_t bytes = 0;
    for (const auto& kept : m_Frames) {
        bytes += kept->payload.size();
    }
    while (m_Frames.size() > kKeptFrames || (bytes > kKeptBytes && m_Frames.size() > 1)) {
        bytes -= m_Frames.front()->payload.size();
        m_Frames.pop_front();
    }
}

FrameSender::Packet FrameSender::packetOf(const Frame& frame, std::uint32_t id) {
    const FrameOrder& order = frame.order;
    Packet packet;
    std::uint8_t* next = packet.head.data();
    const bool isLeader = id == 0;
    const bool isTrailer = id == frame.packets - 1;
    putHeader(next, GigEStatus::Success, order.blockId,
              isLeader    ? GigEPacket::Leader
              : isTrailer ? GigEPacket::Trailer
                          : GigEPacket::Payload,
              id);
    next += kStreamHeaderSize;
    const auto put = [&next](std::size_t count, std::uint64_t number) {
        putBigEndian(next, count, number);
        next += count;
    };
    if (isLeader) {
        put(4, kImagePayload);
        put(8, order.timestamp);
        put(4, order.format->code);
        put(4, order.width + (order.faults.lie == Lie::Width ? 4 : 0));
        put(4, order.height);
        put(4, order.picture.offsetX);
        put(4, order.picture.offsetY);
        put(4, 0); // no padding
    } else if (isTrailer) {
        put(4, kImagePayload);
        put(4, frame.rows);
    } else {
        const std::size_t first = (id - 1) * frame.chunk;
        packet.data = &frame.payload[first];
        packet.dataSize = std::min(frame.chunk, frame.size - first);
    }
    packet.headSize = static_cast<std::size_t>(next - packet.head.data());
    return packet;
}

bool FrameSender::happens(double percent, const FrameOrder& order, std::uint32_t packet, std::uint64_t purpose) const {
    return percent > 0 && percentOf(m_Seed, order.run << 56 ^ order.number << 24 ^ packet, purpose) < percent;
}

void FrameSender::send(const FrameOrder& order, const std::function<bool()>& isWanted) {
    const std::shared_ptr<Frame> frame = makeFrame(order);
    keepFrame(frame); // before the first packet arrives, after which others may be asked for
    const Faults& faults = order.faults;
    Pacer pacer(std::chrono::nanoseconds(order.target.packetDelay));
    std::vector<Packet> batch;
    batch.reserve(kBatch + 4);
    std::optional<Packet> swapped; // is sent after the next one
    const auto add = [&](const Packet& packet, std::uint32_t id) {
        batch.push_back(packet);
        if (happens(faults.duplicate, order, id, DUPLICATE)) {
            batch.push_back(packet);
        }
    };
    for (std::uint32_t id = 0; id < frame->packets; ++id) {
        const Packet packet = packetOf(*frame, id);
        const bool isLast = id == frame->packets - 1;
        if (happens(faults.loss, order, id, LOSE)) {
            ++m_PacketsDropped;
        } else if (faults.lateMilliseconds > 0 && happens(faults.lateShare, order, id, DELAY)) {
            delay(packet, order);
        } else if (!swapped && !isLast && happens(faults.reorder, order, id, SWAP)) {
            swapped = packet;
            continue;
        } else {
            add(packet, id);
        }
        if (swapped) {
            add(*std::exchange(swapped, std::nullopt), id);
        }
        if (batch.size() >= pacer.batch() || isLast) {
            if (!isWanted()) {
                return;
            }
            sendBatch(batch, order.target);
            pacer.wait(batch.size());
            batch.clear();
            sendLatePackets(Clock::now());
        }
    }
    ++m_FramesSent;
}

void FrameSender::sendBatch(const std::vector<Packet>& packets, const StreamTarget& target) {
    sockaddr_in destination = socketAddress(target.peer);
    std::array<iovec, kBatch * 2> parts{};
    std::array<mmsghdr, kBatch> messages{};
    const std::lock_guard lock(m_SocketMutex);
    if (std::exchange(m_DoesNotFragment, target.doNotFragment) != target.doNotFragment) {
        m_Socket.setDoNotFragment(target.doNotFragment);
    }
    for (std::size_t done = 0; done < packets.size();) {
        const std::size_t count = std::min(kBatch, packets.size() - done);
        for (std::size_t i = 0; i < count; ++i) {
            const Packet& packet = packets[done + i];
            parts[2 * i] = {const_cast<std::uint8_t*>(packet.head.data()), packet.headSize};
            parts[2 * i + 1] = {const_cast<std::uint8_t*>(packet.data), packet.dataSize};
            msghdr& header = messages[i].msg_hdr;
            header = {};
            header.msg_name = &destination;
            header.msg_namelen = sizeof destination;
            header.msg_iov = &parts[2 * i];
            header.msg_iovlen = packet.dataSize > 0 ? 2 : 1;
        }
        const int sent = sendmmsg(m_Socket.descriptor(), messages.data(), static_cast<unsigned int>(count), 0);
        if (sent > 0) {
            m_PacketsSent += static_cast<std::uint64_t>(sent);
            done += static_cast<std::size_t>(sent);
        } else if (errno != EINTR) {
            ++done; // a packet that is too large for the network, or has no way to its destination, is lost there
        }
    }
}

void FrameSender::delay(const Packet& packet, const FrameOrder& order) {
    if (m_LatePackets.size() >= kMostLatePackets) {
        return;
    }
    LatePacket late{Clock::now() + std::chrono::milliseconds(order.faults.lateMilliseconds), order.target.peer, {}};
    late.bytes.assign(packet.head.begin(), packet.head.begin() + static_cast<std::ptrdiff_t>(packet.headSize));
    if (packet.dataSize > 0) {
        late.bytes.insert(late.bytes.end(), packet.data, packet.data + packet.dataSize);
    }
    const auto place = std::find_if(m_LatePackets.begin(), m_LatePackets.end(),
                                    [&late](const LatePacket& other) { return other.due > late.due; });
    m_LatePackets.insert(place, std::move(late));
}

Clock::time_point FrameSender::nextLatePacket() const {
    return m_LatePackets.empty() ? Clock::now() + std::chrono::hours(1) : m_LatePackets.front().due;
}

void FrameSender::sendLatePackets(Clock::time_point now) {
    while (!m_LatePackets.empty() && m_LatePackets.front().due <= now) {
        const LatePacket& late = m_LatePackets.front();
        const std::lock_guard lock(m_SocketMutex);
        m_PacketsSent += m_Socket.send(late.bytes, late.peer) ? 1 : 0;
        m_LatePackets.pop_front();
    }
}

void FrameSender::resend(const ResendRequest& request, const Faults& faults) {
    std::shared_ptr<Frame> frame;
    std::uint64_t number = 0;
    {
        const std::lock_guard lock(m_FramesMutex);
        number = ++m_ResendCount;
        const auto found = std::find_if(m_Frames.rbegin(), m_Frames.rend(), [&request](const auto& kept) {
            return kept->order.blockId == request.blockId;
        });
        if (found != m_Frames.rend()) {
            frame = *found;
        }
    }
    std::vector<Packet> packets;
    if (!frame) {
        const std::uint32_t count =
            std::min(request.last - std::min(request.first, request.last), kMostUnavailable - 1) + 1;
        for (std::uint32_t i = 0; i < count; ++i) {
            Packet packet;
            putHeader(packet.head.data(), GigEStatus::PacketUnavailable, request.blockId, GigEPacket::Payload,
                      request.first + i);
            packet.headSize = kStreamHeaderSize;
            packets.push_back(packet);
        }
        sendBatch(packets, request.target);
        return;
    }
    const std::uint32_t last = std::min(request.last, frame->packets - 1);
    for (std::uint32_t id = request.first; id <= last; ++id) {
        if (happens(faults.loss, frame->order, id, LOSE_AGAIN + number)) {
            ++m_PacketsDropped;
        } else {
            packets.push_back(packetOf(*frame, id));
        }
    }
    m_ResendsAnswered += packets.size(); // before they are sent: who has one finds it counted
    sendBatch(packets, frame->order.target);
    const std::lock_guard lock(m_FramesMutex);
    frame.reset(); // under the lock that the frame's memory is taken again under
}

void FrameSender::sendTestPacket(const StreamTarget& target) {
    const Bytes bytes(target.packetSize - kDatagramOverhead);
    const std::lock_guard lock(m_SocketMutex);
    m_Socket.setDoNotFragment(true); // a test packet that arrives in parts says nothing
    m_DoesNotFragment = true;
    m_Socket.send(bytes, target.peer);
}

CameraCounts FrameSender::counts() const {
    return {m_FramesSent, m_PacketsSent, m_PacketsDropped, m_ResendsAnswered};
}

} // namespace GenICamDevices
