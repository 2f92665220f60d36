// SPDX-License-Identifier: Apache-2.0

#include "Serve/Network/Peer.h"

#include <algorithm>
#include <array>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/status.hpp>

namespace QuillTool::Serve {

namespace asio = boost::asio;
namespace beast = boost::beast;
using ErrorCode = boost::system::error_code;

namespace {

constexpr std::size_t kPiece = 256 * 1024;
constexpr std::size_t kMaximumIgnored = 4 * 1024 * 1024;
constexpr std::chrono::seconds kFarewellLimit{2};

constexpr const char* kCommonFields =
    "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "Referrer-Policy: no-referrer\r\n"
    "Cross-Origin-Resource-Policy: same-origin\r\n";

} // namespace

Peer::Peer(beast::tcp_stream&& stream, Seats::Seat seat, Hosting& hosting)
    : m_Stream(std::move(stream)), m_Executor(m_Stream.get_executor()), m_Seat(std::move(seat)), m_Hosting(hosting) {}

void Peer::end() {
    asio::post(m_Executor, [self = shared_from_this()] { self->leave(); });
}

void Peer::leave() {
    if (!std::exchange(m_HasLeft, true)) {
        m_Next = nullptr;
        m_Stream.close();
        onLeft();
    }
}

void Peer::send(std::string head, std::shared_ptr<const std::string> body, std::function<void()> next) {
    m_Head = std::move(head);
    m_Body = body ? std::move(body) : std::make_shared<const std::string>();
    m_Sent = 0;
    m_Next = std::move(next);
    sendPiece();
}

void Peer::sendPiece() {
    if (m_HasLeft) {
        return;
    }
    const std::size_t size = std::min(kPiece, m_Body->size() - m_Sent);
    const std::array<asio::const_buffer, 2> buffers{asio::buffer(m_Head), asio::buffer(m_Body->data() + m_Sent, size)};
    m_Stream.expires_after(kSendLimit);
    asio::async_write(m_Stream, buffers, [this, size, self = shared_from_this()](ErrorCode error, std::size_t) {
        if (error || m_HasLeft) {
            leave();
            return;
        }
        m_Head.clear();
        m_Sent += size;
        if (m_Sent < m_Body->size()) {
            sendPiece();
            return;
        }
        m_Body.reset();
        if (const auto next = std::exchange(m_Next, nullptr)) {
            next();
        }
    });
}

void Peer::watch() {
    // The socket itself: its reading has no limit, only the stream's sending has.
    m_Ignored.resize(512);
    m_Stream.socket().async_read_some(asio::buffer(m_Ignored),
                                      [this, self = shared_from_this()](ErrorCode error, std::size_t count) {
                                          m_IgnoredBytes += count;
                                          if (error || m_HasLeft || m_IgnoredBytes > kMaximumHeader) {
                                              leave();
                                          } else {
                                              watch();
                                          }
                                      });
}

void Peer::leavePolitely() {
    ErrorCode ignored;
    m_Stream.socket().shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
    m_Ignored.resize(kPiece);
    m_Stream.expires_after(kFarewellLimit);
    discard();
}

void Peer::discard() {
    m_Stream.async_read_some(asio::buffer(m_Ignored),
                             [this, self = shared_from_this()](ErrorCode error, std::size_t count) {
                                 m_IgnoredBytes += count;
                                 if (error || m_HasLeft || m_IgnoredBytes > kMaximumIgnored) {
                                     leave();
                                 } else {
                                     discard();
                                 }
                             });
}

std::string answerHead(unsigned status, const Fields& fields) {
    const auto reason = beast::http::obsolete_reason(beast::http::int_to_status(status));
    std::string head = "HTTP/1.1 " + std::to_string(status) + ' ' + std::string(reason.data(), reason.size()) + "\r\n";
    for (const auto& [name, value] : fields) {
        head += name;
        head += ": ";
        head += value;
        head += "\r\n";
    }
    return head + kCommonFields + "\r\n";
}

} // namespace QuillTool::Serve
