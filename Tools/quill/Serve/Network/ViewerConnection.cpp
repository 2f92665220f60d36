// SPDX-License-Identifier: Apache-2.0

#include "Serve/Network/ViewerConnection.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>
#include <variant>

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core/buffers_to_string.hpp>

#include "Serve/Protocol/Documents.h"
#include "Serve/Protocol/Framing.h"

namespace QuillTool::Serve {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;

namespace {

constexpr std::size_t kMaximumMessage = 4 * 1024;
constexpr std::size_t kMaximumUnsent = 64; // messages; only a client that asks and does not listen has so many
constexpr unsigned kMaximumPictures = 2;   // under way

/// Since 1970.
double millisecondsNow() {
    return std::chrono::duration<double, std::milli>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace

ViewerConnection::ViewerConnection(beast::tcp_stream&& stream, Seats::Seat seat, Seats::Seat viewerSeat,
                                   std::shared_ptr<LiveFeed> feed)
    : m_Socket(std::move(stream)), m_Executor(m_Socket.get_executor()), m_Seat(std::move(seat)),
      m_ViewerSeat(std::move(viewerSeat)), m_Feed(std::move(feed)), m_Buffer(kMaximumMessage * 2) {}

void ViewerConnection::start(Request request) {
    m_Request = std::move(request);
    beast::get_lowest_layer(m_Socket).expires_never(); // the limits of the WebSocket take its place
    m_Socket.set_option(websocket::stream_base::timeout{kRequestLimit, kIdleLimit, true});
    m_Socket.read_message_max(kMaximumMessage);
    m_Socket.async_accept(m_Request, [self = shared_from_this()](ErrorCode error) {
        if (error || self->m_IsClosing) {
            self->leave();
            return;
        }
        self->join();
        self->read();
    });
}

void ViewerConnection::end() {
    asio::post(m_Executor, [self = shared_from_this()] {
        self->leave();
        beast::get_lowest_layer(self->m_Socket).close();
    });
}

void ViewerConnection::leave() {
    m_IsClosing = true;
    m_Viewer.reset();
}

void ViewerConnection::close(const CloseReason& reason) {
    if (!std::exchange(m_IsClosing, true)) {
        m_Viewer.reset();
        m_Socket.async_close(reason, [self = shared_from_this()](ErrorCode) {});
    }
}

/// Returns a function for the feed's thread that runs @p action here, unless the viewer has left.
template <typename Action>
auto ViewerConnection::onStrand(Action action) {
    return [weak = weak_from_this(), executor = m_Executor, action](auto... values) {
        asio::post(executor, [weak, action, values...] {
            const auto self = weak.lock();
            if (self != nullptr && !self->m_IsClosing) {
                action(*self, values...);
            }
        });
    };
}

void ViewerConnection::join() {
    m_Viewer = m_Feed->join(onStrand([](ViewerConnection& self) { self.sendPicture(); }),
                            onStrand([](ViewerConnection& self, const std::string& status, const std::string& text) {
                                self.sendText({{"type", "state"}, {"status", status}, {"text", text}});
                            }));
}

void ViewerConnection::read() {
    m_Socket.async_read(m_Buffer, [self = shared_from_this()](ErrorCode error, std::size_t) {
        if (error || self->m_IsClosing) {
            self->leave();
            return;
        }
        self->onMessage();
        self->m_Buffer.consume(self->m_Buffer.size());
        self->read(); // also takes the answer to a close
    });
}

void ViewerConnection::onMessage() {
    if (!m_Socket.got_text()) {
        close({websocket::close_code::unknown_data, "Send texts."});
        return;
    }
    try {
        std::visit([this](const auto& message) { handle(message); },
                   parseViewerMessage(beast::buffers_to_string(m_Buffer.data()), m_Look));
    } catch (const Refusal& refusal) {
        close({websocket::close_code::policy_error, refusal.what()});
    }
}

void ViewerConnection::handle(const Ready& ready) {
    const auto underWay = static_cast<unsigned>(std::count_if(
        m_Messages.begin(), m_Messages.end(), [](const Message& message) { return message.picture != nullptr; }));
    m_Credits = std::min(m_Credits + ready.credits, kMaximumPictures - std::min(underWay, kMaximumPictures));
    if (m_Credits > 0 && !std::exchange(m_IsAsking, true)) {
        m_Viewer->demand();
    }
}

void ViewerConnection::handle(const Look& look) {
    m_Look = look;
    m_Viewer->setView({look.scale, look.quality});
}

void ViewerConnection::handle(const Hold& /*hold*/) {
    sendText({{"type", "held"}, {"frame", m_Viewer->hold()}});
}

void ViewerConnection::handle(const Release& /*release*/) {
    m_Viewer->release();
}

void ViewerConnection::sendPicture() {
    auto picture = m_IsAsking ? m_Viewer->take() : nullptr;
    if (picture == nullptr) {
        return;
    }
    m_IsAsking = false;
    Json description = picture->description;
    description["sent"] = millisecondsNow();
    m_Messages.push_back({pictureHeader(description), std::move(picture)});
    if (--m_Credits > 0) {
        m_IsAsking = true;
        m_Viewer->demand();
    }
    if (m_Messages.size() == 1) {
        sendNext();
    }
}

void ViewerConnection::sendText(const Json& message) {
    if (m_Messages.size() >= kMaximumUnsent) {
        leave();
        beast::get_lowest_layer(m_Socket).close();
        return;
    }
    m_Messages.push_back({toText(message), nullptr});
    if (m_Messages.size() == 1) {
        sendNext();
    }
}

void ViewerConnection::sendNext() {
    const Message& message = m_Messages.front();
    m_Socket.binary(message.picture != nullptr);
    const std::array<asio::const_buffer, 2> buffers{
        asio::buffer(message.text), message.picture ? asio::buffer(message.picture->jpeg) : asio::const_buffer()};
    m_Socket.async_write(buffers, [self = shared_from_this()](ErrorCode error, std::size_t) {
        self->m_Messages.pop_front();
        if (error || self->m_IsClosing) {
            self->leave();
        } else if (!self->m_Messages.empty()) {
            self->sendNext();
        }
    });
}

} // namespace QuillTool::Serve
