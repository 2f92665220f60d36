// SPDX-License-Identifier: Apache-2.0

#include "Serve/Network/Senders.h"

#include <utility>

#include "Serve/Protocol/Framing.h"

namespace QuillTool::Serve {

namespace {

constexpr std::chrono::seconds kSilence{15};

/// The fields of an answer whose end is that of the connection.
Fields endless(const std::string& mediaType) {
    return {{"Content-Type", mediaType}, {"Cache-Control", "no-store"}, {"Connection", "close"}};
}

} // namespace

DownloadSender::DownloadSender(boost::beast::tcp_stream&& stream, Seats::Seat seat, Hosting& hosting,
                               std::shared_ptr<ByteGate> gate, Fields fields, bool isChunked)
    : Sender(std::move(stream), std::move(seat), hosting), m_Gate(std::move(gate)), m_Fields(std::move(fields)),
      m_IsChunked(isChunked) {}

void DownloadSender::start() {
    if (m_IsChunked) {
        m_Fields.emplace_back("Transfer-Encoding", "chunked");
    }
    m_Fields.emplace_back("Connection", "close");
    watch();
    send(answerHead(200, m_Fields), nullptr, [this] {
        m_IsSending = false;
        m_Gate->onBytes(later(std::static_pointer_cast<DownloadSender>(shared_from_this()), &DownloadSender::sendNext));
    });
}

void DownloadSender::sendNext() {
    if (hasLeft() || m_IsSending) {
        return;
    }
    ByteGate::Taken taken = m_Gate->take();
    if (taken.bytes.empty()) {
        if (taken.isLast) {
            m_IsSending = true; // for good
            if (taken.isComplete) {
                send(m_IsChunked ? std::string(kLastChunk) : "", nullptr, [this] { leavePolitely(); });
            } else {
                leave();
            }
        }
        return;
    }
    m_IsSending = true;
    std::string head = m_IsChunked ? chunkHeader(taken.bytes.size()) : "";
    if (m_IsChunked) {
        taken.bytes += kChunkEnd;
    }
    send(std::move(head), std::make_shared<const std::string>(std::move(taken.bytes)), [this] {
        m_IsSending = false;
        sendNext();
    });
}

EventSender::EventSender(boost::beast::tcp_stream&& stream, Seats::Seat seat, Hosting& hosting,
                         std::shared_ptr<Subscription> subscription)
    : Sender(std::move(stream), std::move(seat), hosting), m_Subscription(std::move(subscription)),
      m_Silence(m_Executor) {}

void EventSender::start() {
    watch();
    send(answerHead(200, endless("text/event-stream")), nullptr, [this] {
        m_IsSending = false;
        m_Subscription->onEvents(
            later(std::static_pointer_cast<EventSender>(shared_from_this()), &EventSender::sendNext));
        awaitSilence();
    });
}

void EventSender::onLeft() {
    m_Silence.cancel();
    m_Subscription.reset();
}

void EventSender::sendNext() {
    if (hasLeft()) {
        return;
    }
    if (m_Subscription->hasOverflown()) {
        leave(); // it connects again and gets everything anew
        return;
    }
    if (m_IsSending) {
        return;
    }
    std::string texts = m_Subscription->take();
    if (!texts.empty()) {
        m_IsSending = true;
        m_Silence.cancel();
        send(std::move(texts), nullptr, [this] {
            m_IsSending = false;
            awaitSilence();
            sendNext();
        });
    }
}

void EventSender::awaitSilence() {
    m_Silence.expires_after(kSilence);
    m_Silence.async_wait([this, self = shared_from_this()](boost::system::error_code error) {
        if (error || hasLeft() || m_IsSending) {
            return;
        }
        m_IsSending = true;
        send(": nothing new\n\n", nullptr, [this] {
            m_IsSending = false;
            awaitSilence();
            sendNext();
        });
    });
}

MotionSender::MotionSender(boost::beast::tcp_stream&& stream, Seats::Seat seat, Seats::Seat viewerSeat,
                           Hosting& hosting, LivePictures&& pictures)
    : Sender(std::move(stream), std::move(seat), hosting), m_ViewerSeat(std::move(viewerSeat)),
      m_Pictures(std::move(pictures)) {}

void MotionSender::start() {
    m_Viewer = m_Pictures.feed->join(
        later(std::static_pointer_cast<MotionSender>(shared_from_this()), &MotionSender::sendPicture),
        [](const auto&... /*state*/) {});
    m_Viewer->setView({m_Pictures.look.scale, m_Pictures.look.quality});
    watch();
    const std::string mediaType = "multipart/x-mixed-replace; boundary=" + std::string(kPictureBoundary);
    send(answerHead(200, endless(mediaType)) + pictureBoundary(), nullptr, [this] { demandPicture(); });
}

void MotionSender::demandPicture() {
    m_IsSending = false;
    m_Viewer->demand();
}

void MotionSender::sendPicture() {
    const auto picture = hasLeft() || m_IsSending ? nullptr : m_Viewer->take();
    if (picture == nullptr) {
        return;
    }
    m_IsSending = true;
    // The body shares the picture's bytes.
    send(partHeader(picture->jpeg.size()), {picture, &picture->jpeg},
         [this] { send(pictureBoundary(), nullptr, [this] { demandPicture(); }); });
}

} // namespace QuillTool::Serve
