// SPDX-License-Identifier: Apache-2.0

#include "Serve/Network/Connection.h"

#include <array>
#include <utility>

#include <boost/asio/dispatch.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include "Serve/Network/ByteGate.h"
#include "Serve/Network/Senders.h"
#include "Serve/Network/ViewerConnection.h"
#include "Serve/Protocol/Documents.h"

namespace QuillTool::Serve {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;

namespace {

constexpr std::size_t kReadAtOnce = 16 * 1024;
constexpr std::size_t kLargestBody = 1024 * 1024; // of all routes

std::string plain(beast::string_view text) {
    return {text.data(), text.size()};
}

template <typename Name>
std::optional<std::string> field(const http::fields& fields, const Name& name) {
    const auto count = fields.count(name);
    if (count > 1) {
        throw Refusal(400, "BadRequest", "A field of the request is there more than once.", "Send it once.");
    }
    return count == 0 ? std::nullopt : std::optional(plain(fields.find(name)->value()));
}

Credentials credentialsOf(const http::fields& fields, const asio::ip::tcp::socket& socket) {
    boost::system::error_code error;
    auto local = socket.local_endpoint(error).address();
    if (local.is_v6() && local.to_v6().is_v4_mapped()) {
        local = asio::ip::make_address_v4(asio::ip::v4_mapped, local.to_v6());
    }
    return {field(fields, http::field::host),   field(fields, http::field::origin),
            field(fields, "Sec-Fetch-Site"),    field(fields, http::field::authorization),
            field(fields, http::field::cookie), error ? "" : local.to_string()};
}

/// What answers a message that cannot be parsed.
struct MessageFault {
    http::error error;
    int status;
    const char* name;
    const char* message;
};

constexpr std::array kMessageFaults{
    MessageFault{http::error::header_limit, 431, "HeaderTooLarge", "The header of the request is too large."},
    MessageFault{http::error::body_limit, 413, "BodyTooLarge", "The body of the request is too large."},
    MessageFault{http::error::bad_version, 505, "BadVersion", "The version of the protocol is not supported."},
};

Refusal tooBusy() {
    return {503, "Busy", "The server is busy with other requests.", "Try again in a moment."};
}

} // namespace

Connection::Connection(beast::tcp_stream&& stream, Seats::Seat seat, Hosting& hosting, bool isSurplus)
    : Peer(std::move(stream), std::move(seat), hosting), m_Buffer(kReadAtOnce), m_IsSurplus(isSurplus) {}

void Connection::start() {
    asio::dispatch(m_Executor, [self = self()] { self->awaitRequest(kRequestLimit); });
}

void Connection::awaitRequest(std::chrono::seconds limit) {
    if (hasLeft()) {
        return;
    }
    m_Call = {};
    m_Route = nullptr;
    m_Parser.emplace();
    m_Parser->header_limit(kMaximumHeader);
    m_Parser->body_limit(kLargestBody);
    if (m_Buffer.size() != 0) {
        readHeader();
        return;
    }
    m_Stream.expires_after(limit);
    m_Stream.async_read_some(m_Buffer.prepare(kReadAtOnce / 4),
                             [this, self = self()](ErrorCode error, std::size_t count) {
                                 if (error || hasLeft()) {
                                     leave();
                                     return;
                                 }
                                 m_Buffer.commit(count);
                                 readHeader();
                             });
}

void Connection::readHeader() {
    m_Stream.expires_after(kRequestLimit); // for header and body
    http::async_read_header(m_Stream, m_Buffer, *m_Parser,
                            [self = self()](ErrorCode error, std::size_t) { self->onHeader(error); });
}

void Connection::onHeader(ErrorCode error) {
    if (hasLeft()) {
        return;
    }
    if (error) {
        refuseMessage(error);
        return;
    }
    try {
        m_Route = &letIn(m_Call);
        readBody();
    } catch (const MethodRefusal& refusal) {
        m_IsBroken = true; // its body is not read
        const Fields allow{{"Allow", refusal.methods}};
        if (m_Parser->get().method() == http::verb::options) {
            reply({204, allow});
        } else {
            refuse(refusal, allow);
        }
    } catch (const Refusal& refusal) {
        m_IsBroken = true;
        refuse(refusal);
    }
}

const Route& Connection::letIn(Call& call) const {
    if (m_IsSurplus) {
        throw Refusal(503, "TooManyConnections", "The server has as many connections as it takes.",
                      "Close a page, or try again in a moment.");
    }
    const auto& request = m_Parser->get();
    const Credentials credentials = credentialsOf(request, m_Stream.socket());
    const Surroundings& surroundings = m_Hosting.surroundings;
    surroundings.access.checkPlace(credentials);
    call.target = parseTarget(std::string_view(request.target().data(), request.target().size()));
    const Route& route =
        findRoute(std::string_view(request.method_string().data(), request.method_string().size()), call);
    if (route.needsToken) {
        surroundings.access.checkToken(credentials);
    }
    if (route.changesCameras && surroundings.viewOnly) {
        throw Refusal(403, "ViewOnly", "This server shows cameras and does not change them.",
                      "Start it without --view-only.");
    }
    if (m_Parser->content_length() && *m_Parser->content_length() > route.maximumBody) {
        throw Refusal(413, "BodyTooLarge", "The body of the request is too large.",
                      "Send at most " + std::to_string(route.maximumBody) + " bytes.");
    }
    call.contentType = field(request, http::field::content_type).value_or("");
    call.ifNoneMatch = field(request, http::field::if_none_match).value_or("");
    return route;
}

void Connection::readBody() {
    m_Parser->body_limit(m_Route->maximumBody); // that of a chunked body
    const auto read = [self = self()] {
        http::async_read(self->m_Stream, self->m_Buffer, *self->m_Parser,
                         [self](ErrorCode error, std::size_t) { self->onBody(error); });
    };
    const auto& request = m_Parser->get();
    const bool asksFirst = !m_Parser->is_done() && request.version() >= 11 &&
                           holdsWord(plain(request[http::field::expect]), "100-continue");
    if (asksFirst) {
        send("HTTP/1.1 100 Continue\r\n\r\n", nullptr, [this, read] {
            m_Stream.expires_after(kRequestLimit);
            read();
        });
    } else {
        read();
    }
}

void Connection::onBody(ErrorCode error) {
    if (hasLeft()) {
        return;
    }
    if (error) {
        refuseMessage(error);
        return;
    }
    m_Call.body = std::move(m_Parser->get().body());
    perform();
}

void Connection::perform() {
    if (m_Route->place == Place::AtOnce) {
        try {
            deliver(m_Route->answer(m_Hosting.surroundings, m_Call));
        } catch (const std::exception& failure) {
            refuse(refusalOf(failure));
        }
        return;
    }
    WorkerPool& pool = m_Route->place == Place::Downloads ? m_Hosting.downloads : m_Hosting.calls;
    const std::string subject = m_Call.names.empty() ? "" : m_Call.names.front();
    if (!pool.post(subject, [self = self(), call = m_Call, route = m_Route] { work(self, call, *route); })) {
        refuse(tooBusy(), {{"Retry-After", "1"}});
    }
}

void Connection::work(const std::shared_ptr<Connection>& connection, const Call& call, const Route& route) {
    try {
        Answer answer = route.answer(connection->m_Hosting.surroundings, call);
        if (const auto* const download = std::get_if<Download>(&answer)) {
            produce(connection, *download);
            return;
        }
        const auto kept = std::make_shared<Answer>(std::move(answer));
        asio::post(connection->m_Executor, [connection, kept] { connection->deliver(std::move(*kept)); });
    } catch (const std::exception& failure) {
        asio::post(connection->m_Executor, [connection, refusal = refusalOf(failure)] { connection->refuse(refusal); });
    }
}

void Connection::produce(const std::shared_ptr<Connection>& connection, const Download& download) {
    const auto gate = std::make_shared<ByteGate>();
    bool hasBegun = false;
    const auto begin = [&connection, &download, &gate, &hasBegun] {
        if (!std::exchange(hasBegun, true)) {
            asio::post(connection->m_Executor, [connection, gate, fields = download.fields] {
                const bool isChunked = connection->m_Parser->get().version() >= 11;
                std::make_shared<DownloadSender>(connection->handOver(), std::move(connection->m_Seat),
                                                 connection->m_Hosting, gate, fields, isChunked)
                    ->begin();
            });
        }
    };
    try {
        download.produce([&begin, &gate](std::string_view bytes) {
            begin();
            return gate->write(bytes);
        });
        begin();
        gate->finish(true);
    } catch (const std::exception&) {
        gate->finish(false); // the client sees that bytes are missing
        if (!hasBegun) {
            throw;
        }
    }
}

void Connection::deliver(Answer&& answer) {
    if (hasLeft()) {
        return;
    }
    if (auto* const complete = std::get_if<Reply>(&answer)) {
        reply(*complete);
    } else if (auto* const events = std::get_if<EventStream>(&answer)) {
        std::make_shared<EventSender>(handOver(), std::move(m_Seat), m_Hosting, std::move(events->subscription))
            ->begin();
    } else if (auto* const pictures = std::get_if<LivePictures>(&answer)) {
        showPictures(std::move(*pictures));
    }
}

void Connection::showPictures(LivePictures&& pictures) {
    if (pictures.isWebSocket && !beast::websocket::is_upgrade(m_Parser->get())) {
        refuse({426, "UpgradeRequired", "Live pictures come by a WebSocket.", "Use /live.mjpeg without one."},
               {{"Upgrade", "websocket"}});
        return;
    }
    auto seat = m_Hosting.viewers.take();
    if (!seat) {
        refuse({503, "TooManyViewers", "As many viewers as the server takes are there.", "Close another one."},
               {{"Retry-After", "5"}});
        return;
    }
    if (pictures.isWebSocket) {
        const auto viewer = std::make_shared<ViewerConnection>(handOver(), std::move(m_Seat), std::move(*seat),
                                                               std::move(pictures.feed));
        m_Hosting.census.add(viewer);
        viewer->start(m_Parser->release());
    } else {
        std::make_shared<MotionSender>(handOver(), std::move(m_Seat), std::move(*seat), m_Hosting, std::move(pictures))
            ->begin();
    }
}

bool Connection::staysOpen() const {
    return !m_IsBroken && !m_IsSurplus && m_Parser->is_done() && m_Parser->get().keep_alive();
}

void Connection::reply(const Reply& reply) {
    const bool stays = staysOpen();
    const bool hasNoBody = reply.status == 204 || reply.status == 304;
    Fields fields = reply.fields;
    if (!hasNoBody) {
        fields.emplace_back("Content-Length", std::to_string(reply.body ? reply.body->size() : 0));
    }
    fields.emplace_back("Connection", stays ? "keep-alive" : "close");
    send(answerHead(reply.status, fields), isHead() ? nullptr : reply.body, [this, stays] {
        if (stays) {
            awaitRequest(kIdleLimit);
        } else {
            leavePolitely();
        }
    });
}

void Connection::refuse(const Refusal& refusal, Fields fields) {
    if (hasLeft()) {
        return;
    }
    fields.emplace_back("Content-Type", "application/problem+json");
    fields.emplace_back("Cache-Control", "no-store");
    if (refusal.status == 401) {
        fields.emplace_back("WWW-Authenticate", "Bearer");
    }
    reply({static_cast<unsigned>(refusal.status), std::move(fields),
           std::make_shared<const std::string>(problemDocument(refusal))});
}

void Connection::refuseMessage(ErrorCode error) {
    m_IsBroken = true;
    if (error.category() != http::make_error_code(http::error::bad_version).category() ||
        error == http::error::end_of_stream || error == http::error::partial_message) {
        leave(); // it has left, or said nothing for too long
        return;
    }
    for (const MessageFault& fault : kMessageFaults) {
        if (error == fault.error) {
            refuse({fault.status, fault.name, fault.message, "Send less, or by HTTP/1.1."});
            return;
        }
    }
    refuse({400, "BadRequest", "The request is not HTTP: " + error.message() + '.', "Send a request of HTTP/1.1."});
}

} // namespace QuillTool::Serve
