// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include "Serve/Network/Peer.h"

namespace QuillTool::Serve {

/// A connection with requests, one after the other.
class Connection : public Peer {
public:
    /// @param isSurplus  refuses the first request, since there are too many connections
    Connection(boost::beast::tcp_stream&& stream, Seats::Seat seat, Hosting& hosting, bool isSurplus);

    /// Begins to read; called once.
    void start();

private:
    using ErrorCode = boost::system::error_code;
    using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;

    std::shared_ptr<Connection> self() { return std::static_pointer_cast<Connection>(shared_from_this()); }

    void awaitRequest(std::chrono::seconds limit);
    void readHeader();
    void onHeader(ErrorCode error);
    /// Lets the request in, or throws the Refusal.
    const Route& letIn(Call& call) const;
    void readBody();
    void onBody(ErrorCode error);
    void perform();
    /// Makes the answer; on a worker's thread.
    static void work(const std::shared_ptr<Connection>& connection, const Call& call, const Route& route);
    static void produce(const std::shared_ptr<Connection>& connection, const Download& download);

    void deliver(Answer&& answer);
    void reply(const Reply& reply);
    void refuse(const Refusal& refusal, Fields fields = {});
    void refuseMessage(ErrorCode error);
    void sendEvents(EventStream&& events);
    void showPictures(LivePictures&& pictures);
    bool isHead() const { return m_Parser->get().method() == boost::beast::http::verb::head; }
    bool staysOpen() const;

    boost::beast::flat_buffer m_Buffer;
    std::optional<Parser> m_Parser;
    Call m_Call;
    const Route* m_Route = nullptr;
    bool m_IsSurplus;
    bool m_IsBroken = false; // what follows in the buffer is no request
};

} // namespace QuillTool::Serve
